// Jobs over the control socket, as the client's library and any other client of HTTP use them.
#include "agent/client/AgentApi.h"
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

using NoxAgent::AgentApi;
using NoxAgent::CommandError;
using NoxAgent::ExitCode;

namespace {

class Jobs : public AgentFixture {
 protected:
  std::string JobFile(const std::string& id) const { return "state/var/jobs/" + id + ".job"; }
};

}  // namespace

TEST_F(Jobs, ArePutReplacedReadAndDeleted) {
  StartAgent();
  AgentApi agent(Socket());
  EXPECT_EQ(agent.JobText("a"), std::nullopt);
  EXPECT_FALSE(agent.DeleteJob("a"));
  const std::string text = "[Job]\ncommand = echo\narguments = \"gr\xC3\xBC\xC3\x9F Gott\"\n";
  agent.PutJob("a", "[Job]\ncommand = true\n");
  agent.PutJob("a", text);
  EXPECT_EQ(m_Directory.Read(JobFile("a")), text);
  EXPECT_EQ(agent.JobText("a"), text);
  EXPECT_TRUE(agent.DeleteJob("a"));
  EXPECT_FALSE(m_Directory.Has(JobFile("a")));
}

TEST_F(Jobs, CountFromTheNextRunOn) {
  StartAgent();
  AgentApi agent(Socket());
  const auto job = [&](const char* word) {
    return "[Job]\ncommand = /bin/sh\narguments = -c 'echo " + std::string(word) + " >> " +
           Path("runs") + "'\n";
  };
  agent.PutJob("a", job("one"));
  AddTask("a", Trigger(0, FromNow(3600)));
  const auto run = [&] {
    (void)Http("POST", "/v1/command/INoxScheduledTaskHandler/RunTasksEx",
               R"({"batch":"a:0:0:0;"})");
  };
  run();
  ASSERT_TRUE(WaitUntil([&] {
    const auto latest = agent.LatestRun("a");
    return latest.has_value() && latest->at("state") == "ended";
  }));
  agent.PutJob("a", job("two"));
  run();
  ASSERT_TRUE(WaitUntil([&] { return CountLines("runs") == 2; }));
  EXPECT_EQ(m_Directory.Read("runs"), "one\ntwo\n");
}

TEST_F(Jobs, PutOutWhatTheClientFollows) {
  StartAgent();
  AddAsapTask("a", "echo one; until test -e go; do sleep 0.1; done; echo two");
  const Program follower({{NOX_CLIENT, "--runtime-dir", Path("state/run"), "log", "-f", "a"}},
                         Path("followed"));
  ASSERT_TRUE(follower.WaitForOutput("one\n"));
  m_Directory.Write("go", "");
  ASSERT_TRUE(follower.WaitForOutput("one\ntwo\n-- "));
  ASSERT_TRUE(WaitForState("a", "Ok"));
  const auto whole = Ctl({"log", "a"});
  EXPECT_EQ(whole.m_Status, 0) << whole.m_Error;
  EXPECT_EQ(whole.m_Output.find("one\ntwo\n-- "), 0u);
}

TEST_F(Jobs, AreRefusedWithAllThatIsWrong) {
  StartAgent();
  AgentApi agent(Socket());
  try {
    agent.PutJob("a", "[Job]\nuser=\noverlap=x\n");
    ADD_FAILURE() << "a job without a command";
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
    const std::string file = Path(JobFile("a"));
    EXPECT_EQ(error.what(), file + ":2: user: a user's name is missing; " + file +
                                ":3: overlap: is to be skip, queue, kill or allow; " + file +
                                ": the section \"Job\" has no \"command\"");
  }
  EXPECT_FALSE(m_Directory.Has(JobFile("a")));
}

TEST_F(Jobs, ThatCannotBeReadAreAnError) {
  StartAgent();
  AgentApi agent(Socket());
  m_Directory.Write(JobFile("a"), std::string(70000, '#'));
  try {
    (void)agent.JobText("a");
    ADD_FAILURE() << "a job of 70000 bytes";
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Failed);
    EXPECT_EQ(error.what(), "the job file " + Path(JobFile("a")) + " is larger than 64 KiB");
  }
  EXPECT_TRUE(agent.DeleteJob("a"));
}
