// The agent as a process: its start, its signals, its end.
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

class Agent : public AgentFixture {};

}  // namespace

TEST_F(Agent, EndsCleanlyWhenAskedTo) {
  for (const int signal : {SIGTERM, SIGINT}) {
    StartAgent();
    m_Agent->Signal(signal);
    EXPECT_EQ(m_Agent->WaitForEnd(), 0);
    EXPECT_FALSE(fs::exists(Socket()));
    const std::string log = m_Agent->Output();
    const std::size_t command = log.find("Unloaded the plug-in command");
    EXPECT_NE(command, std::string::npos) << log;
    EXPECT_NE(log.find("Unloaded the plug-in scheduler", command), std::string::npos) << log;
  }
}

TEST_F(Agent, RefusesASecondOneInTheSameStateDirectory) {
  StartAgent();
  const auto second =
      Program::Run({{NOX_AGENT, "--state-dir", Path("state"), "--runtime-dir", Path("other")}},
                   m_Directory.Path());
  EXPECT_NE(second.m_Status, 0);
  EXPECT_NE(second.m_Error.find("another noxagentd (process " + std::to_string(m_Agent->Pid()) +
                                ") uses " + Path("state")),
            std::string::npos)
      << second.m_Error;
  EXPECT_EQ(Ctl({"status"}).m_Status, 0);
}

TEST_F(Agent, ReadsItsConfigurationAgainOnHangUp) {
  m_Directory.Write("agent.ini", "");
  StartAgent({"--config", Path("agent.ini"), "--log-level", "trace"});
  m_Agent->Signal(SIGHUP);
  EXPECT_TRUE(m_Agent->WaitForOutput("Policy Refresh finished. Enabling task processing"));
  AddAsapTask("a", "exit 0");
  EXPECT_TRUE(WaitForState("a", "Ok"));
}

TEST_F(Agent, NamesFileLineAndKeyOfABadConfiguration) {
  m_Directory.Write("agent.ini", "# ours\n[Agent]\nstate_dri = /tmp\n");
  const auto result = Program::Run({{NOX_AGENT, "--config", Path("agent.ini"), "--state-dir",
                                     Path("state"), "--runtime-dir", Path("state/run")}},
                                   m_Directory.Path());
  EXPECT_NE(result.m_Status, 0);
  EXPECT_NE(result.m_Error.find(Path("agent.ini") + ":3: "), std::string::npos) << result.m_Error;
  EXPECT_NE(result.m_Error.find("state_dri"), std::string::npos) << result.m_Error;
}

TEST_F(Agent, TellsItsVersionAndItsOptions) {
  for (const char* option : {"--version", "--help"}) {
    const auto result = Program::Run({{NOX_AGENT, option}}, m_Directory.Path());
    EXPECT_EQ(result.m_Status, 0);
    EXPECT_FALSE(result.m_Output.empty());
  }
}

TEST_F(Agent, KeepsItsTasksFromOneStartToTheNext) {
  StartAgent();
  AddAsapTask("a", "echo run >> runs");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  ASSERT_EQ(StopAgent(), 0);
  const std::string before = TaskFile("a");
  StartAgent();
  EXPECT_NE(Ctl({"list"}).m_Output.find("a  "), std::string::npos);
  AddAsapTask("b", "exit 0");
  ASSERT_TRUE(WaitForState("b", "Ok"));
  EXPECT_EQ(TaskFile("a"), before);
  EXPECT_EQ(CountLines("runs"), 1u);
}

// What docs/plugins.md shows.
TEST_F(Agent, RunsTasksWithAHandlerOfOnesOwn) {
  m_Directory.Write("agent.ini", "[Plugin scheduler]\n[Plugin log]\npath = " NOX_LOG_HANDLER
                                 "\nclass_id = {2B9D6A40-6C1E-4E0B-9E57-4F0A8D3C7711}\n");
  StartAgent({"--config", Path("agent.ini")});
  const auto added = Ctl({"add", "-", "--id", "tea"},
                         "<Task><HandlerCLSID>{2B9D6A40-6C1E-4E0B-9E57-4F0A8D3C7711}</HandlerCLSID>"
                         "<Schedule><Trigger Type='-1'/></Schedule></Task>");
  ASSERT_EQ(added.m_Status, 0) << added.m_Error;
  EXPECT_TRUE(WaitForState("tea", "Ok"));
  EXPECT_TRUE(m_Agent->WaitForOutput("Example::LogHandler: Task tea is due"));
}

// Ordinary users run the agent without any configuration; root tries it as one of them.
TEST_F(Agent, WorksForAnOrdinaryUserWithBuiltInDefaults) {
  const bool isRoot = geteuid() == 0;
  fs::create_directories(m_Directory / "home/build/bin");
  fs::create_directories(m_Directory / "home/build/lib");
  const auto copy = [&](const fs::path& file, const char* to) {
    fs::copy_file(file, m_Directory / "home/build" / to / file.filename());
  };
  copy(NOX_AGENT, "bin");
  copy(NOX_CLIENT, "bin");
  for (const char* library : {NOX_LIBRARIES}) {
    copy(library, "lib");
  }
  fs::create_directories(m_Directory / "home/.local/state/nox/var/jobs");
  m_Directory.Write("home/.local/state/nox/var/jobs/a.job",
                    "[Job]\ncommand = id\narguments = -u\n");
  if (isRoot) {
    fs::permissions(m_Directory.Path(), fs::perms(0755));
    ASSERT_EQ(std::system(("chown -R 65534:65534 " + Path("home")).c_str()), 0);
  }
  const std::map<std::string, std::string> environment{
      {"HOME", Path("home")}, {"XDG_STATE_HOME", ""}, {"XDG_RUNTIME_DIR", ""}};
  const auto ctl = [&](std::vector<std::string> arguments, const std::string& input = {}) {
    arguments.insert(arguments.begin(), Path("home/build/bin/noxctl"));
    return Program::Run({arguments, environment, isRoot}, m_Directory.Path(), input);
  };
  m_Agent = std::make_unique<Program>(
      Command{{Path("home/build/bin/noxagentd")}, environment, isRoot}, m_Directory / "agent.log");
  ASSERT_TRUE(WaitUntil([&] { return m_Agent->HasEnded() || ctl({"status"}).m_Status == 0; }));
  const auto added = ctl({"add", "-", "--id", "a"}, Document("<Trigger Type='-1'/>"));
  ASSERT_EQ(added.m_Status, 0) << added.m_Error;
  EXPECT_TRUE(WaitUntil([&] { return ctl({"list"}).m_Output.find("Ok") != std::string::npos; }))
      << m_Agent->Output();
  EXPECT_EQ(m_Directory.Read("home/.local/state/nox/var/output/a.log")
                .find(std::to_string(isRoot ? 65534 : geteuid()) + "\n"),
            0u);
}
