#include "tests/agent/e2e/AgentFixture.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace {

constexpr const char* Handler = "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";

std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
  const std::size_t from = text.find(begin);
  const std::size_t to = from == std::string::npos ? from : text.find(end, from + begin.size());
  return to == std::string::npos ? std::string()
                                 : text.substr(from + begin.size(), to - from - begin.size());
}

}  // namespace

AgentFixture::AgentFixture() {
  std::filesystem::create_directories(m_Directory / "state/var/jobs");
}

AgentFixture::~AgentFixture() {
  if (m_Agent && !m_Agent->HasEnded()) {
    EXPECT_EQ(StopAgent(), 0) << m_Agent->Output();
  }
  if (HasFailure() && m_Agent) {
    GTEST_LOG_(INFO) << "The agent's log:\n" << m_Agent->Output();
  }
}

void AgentFixture::StartAgent(const std::vector<std::string>& options,
                              const std::map<std::string, std::string>& environment) {
  Command command{{NOX_AGENT, "--state-dir", Path("state"), "--runtime-dir", Path("state/run")},
                  environment};
  command.m_Arguments.insert(command.m_Arguments.end(), options.begin(), options.end());
  m_Agent.reset();
  m_Agent = std::make_unique<Program>(
      command, m_Directory / ("agent" + std::to_string(++m_Starts) + ".log"));
  const bool serves = WaitUntil([&] {
    return m_Agent->HasEnded() || Ctl({"status", "--json"}).m_Status == 0;
  });
  ASSERT_TRUE(serves && !m_Agent->HasEnded()) << m_Agent->Output();
}

int AgentFixture::StopAgent() {
  m_Agent->Signal(SIGTERM);
  return m_Agent->WaitForEnd();
}

void AgentFixture::KillAgent() {
  m_Agent->Signal(SIGKILL);
  (void)m_Agent->WaitForEnd();
}

Program::Result AgentFixture::Ctl(const std::vector<std::string>& arguments,
                                  const std::string& input) {
  Command command{{NOX_CLIENT, "--runtime-dir", Path("state/run")}};
  command.m_Arguments.insert(command.m_Arguments.end(), arguments.begin(), arguments.end());
  return Program::Run(command, m_Directory.Path(), input);
}

HttpClient::Response AgentFixture::Http(const std::string& method, const std::string& target,
                                        const std::string& body) const {
  return HttpClient::Ask(Socket(), method, target, body);
}

void AgentFixture::AddJob(const std::string& id, const std::string& script,
                          const std::string& keys) {
  m_Directory.Write(id + ".sh", script + "\n");
  m_Directory.Write("state/var/jobs/" + id + ".job",
                    "[Job]\ncommand = /bin/sh\narguments = " + Path(id + ".sh") +
                        "\ndirectory = " + m_Directory.Path().string() + "\n" + keys + "\n");
}

void AgentFixture::AddTask(const std::string& id, const std::string& triggers) {
  const auto result = Ctl({"add", "-", "--id", id}, Document(triggers));
  ASSERT_EQ(result.m_Status, 0) << result.m_Error;
}

void AgentFixture::AddAsapTask(const std::string& id, const std::string& script,
                               const std::string& keys) {
  AddJob(id, script, keys);
  AddTask(id, "<Trigger Type='-1'/>");
}

std::string AgentFixture::TaskFile(const std::string& id) const {
  const std::string name = "state/var/tasks/" + id + ".vsk";
  return m_Directory.Has(name) ? m_Directory.Read(name) : std::string();
}

std::string AgentFixture::LastRun(const std::string& id) const {
  return Between(TaskFile(id), "<RunTime>", "</RunTime>");
}

std::string AgentFixture::State(const std::string& id) const {
  const std::string run = LastRun(id);
  return run.empty() ? run : run.substr(run.rfind(' ') + 1);
}

bool AgentFixture::WaitForState(const std::string& id, const std::string& state) const {
  return WaitUntil([&] { return State(id) == state; });
}

bool AgentFixture::WaitForFile(const std::string& name) const {
  return WaitUntil([&] { return m_Directory.Has(name); });
}

std::size_t AgentFixture::CountLines(const std::string& name) const {
  const std::string text = m_Directory.Has(name) ? m_Directory.Read(name) : std::string();
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// One that has ended stays visible until its parent has asked after it.
bool AgentFixture::IsAlive(int process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string stat;
  return std::getline(file, stat) && stat.substr(stat.rfind(')') + 2, 1) != "Z";
}

std::string AgentFixture::Trigger(int type, const std::string& begin, const std::string& attributes,
                                  const std::string& children) {
  return "<Trigger Type='" + std::to_string(type) + "' " + attributes + "><BeginDate>" + begin +
         "</BeginDate>" + children + "</Trigger>";
}

std::string AgentFixture::Document(const std::string& triggers) {
  return std::string("<Task Enabled='1'><HandlerCLSID>") + Handler + "</HandlerCLSID><Schedule>" +
         triggers + "</Schedule></Task>";
}

std::string AgentFixture::FromNow(long seconds) {
  const std::time_t moment = std::time(nullptr) + seconds;
  std::tm fields{};
  char text[32];
  (void)localtime_r(&moment, &fields);
  (void)strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &fields);
  return text;
}
