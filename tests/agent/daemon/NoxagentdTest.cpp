// The program itself, as a process.
#include "agent/library/Json.h"
#include "tests/agent/daemon/TestAgent.h"
#include "tests/agent/daemon/control/RawClient.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace NoxAgent {
namespace {

// A child process whose output is read through a pipe.
class Process {
 public:
  Process(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    int fds[2];
    EXPECT_EQ(::pipe2(fds, O_CLOEXEC), 0);
    const std::string program =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "noxagentd";
    std::vector<char*> argv = Pointers(program, arguments);
    m_Process = ::fork();
    if (m_Process == 0) {
      (void)::dup2(fds[1], 1);
      (void)::dup2(fds[1], 2);
      for (const std::string& variable : environment) {
        (void)::putenv(const_cast<char*>(variable.c_str()));
      }
      (void)::execv(program.c_str(), argv.data());
      ::_exit(127);
    }
    (void)::close(fds[1]);
    m_Output = fds[0];
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (m_Process > 0) {
      (void)::kill(m_Process, SIGKILL);
      (void)Wait();
    }
    (void)::close(m_Output);
  }

  void Signal(int signal) const { (void)::kill(m_Process, signal); }
  // Whether it says `end` before it ends.
  bool ReadUntil(const std::string& end) {
    while (m_Text.find(end) == std::string::npos) {
      if (!ReadMore()) {
        return false;
      }
    }
    return true;
  }
  // The exit status, or minus the signal that ended it.
  int Wait() {
    while (ReadMore()) {
    }
    int status = 0;
    (void)::waitpid(m_Process, &status, 0);
    m_Process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  const std::string& Text() const { return m_Text; }

 private:
  static std::vector<char*> Pointers(const std::string& program,
                                     const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
      argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    return argv;
  }

  bool ReadMore() {
    pollfd entry{m_Output, POLLIN, 0};
    char buffer[4096];
    const ssize_t count =
        ::poll(&entry, 1, 30000) == 1 ? ::read(m_Output, buffer, sizeof(buffer)) : 0;
    if (count > 0) {
      m_Text.append(buffer, static_cast<std::size_t>(count));
    }
    return count > 0;
  }

  pid_t m_Process = -1;
  int m_Output = -1;
  std::string m_Text;
};

std::string Manual() {
  std::ostringstream text;
  text << std::ifstream(NOX_MANUAL).rdbuf();
  std::string manual = text.str();
  std::erase(manual, '\\');
  return manual;
}

class NoxagentdTest : public testing::Test {
 protected:
  NoxagentdTest() {
    m_Dir.Write("one.ini", "[Configuration]\ntask_file_extension=.vsk\n");
    m_Dir.Write("agent.ini",
                "[Agent]\nstate_dir=state\nruntime_dir=run\n"
                "[Plugin one]\nconfig=one.ini\npath=" +
                    TestAgent::PluginPath("RecordingPlugin") + "\n");
  }
  std::unique_ptr<Process> Start(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--config", (m_Dir / "agent.ini").string()});
    return std::make_unique<Process>(more, m_Variables);
  }
  std::string Socket() const { return (m_Dir / "run/control.sock").string(); }
  static bool IsServing(Process& process) { return process.ReadUntil("Serving requests on"); }

  TestSupport::TempDir m_Dir;
  std::vector<std::string> m_Variables;
};

TEST_F(NoxagentdTest, TellsItsVersionAndItsOptions) {
  Process version({"--version"}, {});
  EXPECT_EQ(version.Wait(), 0);
  EXPECT_EQ(version.Text().find("noxagentd "), 0U) << version.Text();
  Process help({"--help"}, {});
  EXPECT_EQ(help.Wait(), 0);
  for (const char* const option :
       {"--config", "--state-dir", "--runtime-dir", "--log-level", "--version", "--help"}) {
    EXPECT_NE(help.Text().find(option), std::string::npos) << option;
    EXPECT_NE(Manual().find(option), std::string::npos) << option << " is not in the manual";
  }
}

TEST_F(NoxagentdTest, RefusesWhatItDoesNotUnderstand) {
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{"--nonsense"},
                                             {"more"},
                                             {"--log-level", "loud"},
                                             {"--config"},
                                             {"--config", ""},
                                             {"--config="},
                                             {"--state-dir", ""},
                                             {"--state-dir="},
                                             {"--runtime-dir", ""},
                                             {"--config", "/nowhere/agent.ini"}}) {
    Process process(arguments, {});
    EXPECT_EQ(process.Wait(), 2) << arguments[0];
    EXPECT_EQ(process.Text().find("noxagentd: "), 0U) << process.Text();
    EXPECT_EQ(process.Text().find('\n'), process.Text().size() - 1) << process.Text();
  }
}

TEST_F(NoxagentdTest, NamesFileLineAndKeyOfABadConfiguration) {
  m_Dir.Write("agent.ini", "[Agent]\nstate_dir=state\nspeed=high\n");
  const auto process = Start();
  EXPECT_EQ(process->Wait(), 2);
  EXPECT_EQ(process->Text(), "noxagentd: " + (m_Dir / "agent.ini").string() +
                                 ":3: unknown key \"speed\"; there are state_dir, runtime_dir, "
                                 "socket_group, group_writes_jobs\n");
}

TEST_F(NoxagentdTest, ServesUntilItIsAskedToStop) {
  for (const int signal : {SIGTERM, SIGINT}) {
    const auto process = Start();
    ASSERT_TRUE(IsServing(*process)) << process->Text();
    const Json status = Json::Parse(BodyOf(RawClient::Ask(Socket(), "GET", "/v1/status")));
    EXPECT_EQ(status["stateDir"], (m_Dir / "state").string());
    EXPECT_EQ(status["socket"], Socket());
    EXPECT_EQ(status["plugins"].Items().size(), 1U);
    EXPECT_EQ(status["plugins"].At(0)["name"], "one");
    EXPECT_EQ(status["plugins"].At(0)["interfaces"].Items().size(), 4U);
    EXPECT_NE(status["plugins"].At(0)["report"], "");
    process->Signal(signal);
    EXPECT_EQ(process->Wait(), 0) << process->Text();
    EXPECT_NE(process->Text().find("Unloaded the plug-in one"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Socket()));
  }
}

TEST_F(NoxagentdTest, KeepsASecondOneOut) {
  const auto first = Start();
  ASSERT_TRUE(IsServing(*first)) << first->Text();
  const auto second = Start();
  EXPECT_EQ(second->Wait(), 3);
  EXPECT_NE(second->Text().find("noxagentd: another noxagentd (process "), std::string::npos)
      << second->Text();
  const auto third = Start({"--state-dir", (m_Dir / "other").string()});
  EXPECT_EQ(third->Wait(), 3) << "the socket is another's: " << third->Text();
  EXPECT_EQ(StatusOf(RawClient::Ask(Socket(), "GET", "/v1/status")), 200U);
  const auto fourth = Start(
      {"--state-dir", (m_Dir / "other").string(), "--runtime-dir", (m_Dir / "other/run").string()});
  EXPECT_TRUE(IsServing(*fourth)) << fourth->Text();
}

TEST_F(NoxagentdTest, StartsAgainAfterAKill) {
  {
    const auto first = Start();
    ASSERT_TRUE(IsServing(*first)) << first->Text();
  }
  EXPECT_TRUE(std::filesystem::exists(Socket())) << "left behind by the kill";
  const auto second = Start();
  ASSERT_TRUE(IsServing(*second)) << second->Text();
  EXPECT_EQ(StatusOf(RawClient::Ask(Socket(), "GET", "/v1/status")), 200U);
}

TEST_F(NoxagentdTest, RefreshesWhenAskedBySignalOrRequest) {
  const auto process = Start();
  ASSERT_TRUE(IsServing(*process)) << process->Text();
  EXPECT_EQ(StatusOf(RawClient::Ask(Socket(), "POST", "/v1/refresh")), 200U);
  m_Dir.Write("agent.ini", "[Agent]\nnonsense\n");
  const std::string answer = RawClient::Ask(Socket(), "POST", "/v1/refresh");
  EXPECT_EQ(StatusOf(answer), 422U);
  EXPECT_NE(answer.find("agent.ini:2: neither"), std::string::npos) << answer;
  process->Signal(SIGHUP);
  EXPECT_TRUE(process->ReadUntil("The configuration stays as it was")) << process->Text();
  process->Signal(SIGTERM);
  EXPECT_EQ(process->Wait(), 0) << "a bad refresh does not end the agent: " << process->Text();
}

TEST_F(NoxagentdTest, ARefreshNamesWhatWaitsForTheNextStart) {
  const auto writePluginFile = [&](const std::string& directory) {
    m_Dir.Write("one.ini", "[Configuration]\ntask_file_extension=.vsk\ntask_storage_path=" +
                               (m_Dir / directory).string() + "\n");
  };
  writePluginFile("a");
  const auto process = Start();
  ASSERT_TRUE(IsServing(*process)) << process->Text();
  const auto refresh = [&] {
    return Json::Parse(BodyOf(RawClient::Ask(Socket(), "POST", "/v1/refresh")));
  };
  EXPECT_EQ(refresh()["notInEffect"], Json(Json::List{}));
  writePluginFile("b");
  m_Dir.Write("agent.ini",
              "[Agent]\nstate_dir=other\nruntime_dir=run\n[Log]\nlevel=warning\nfiles=7\n"
              "[Plugin one]\nconfig=one.ini\npath=" +
                  TestAgent::PluginPath("RecordingPlugin") + "\n");
  EXPECT_EQ(refresh(),
            (Json{{"result", 1},
                  {"notInEffect",
                   Json::List{{{"setting", "[Agent] state_dir"},
                               {"old", (m_Dir / "state").string()},
                               {"new", (m_Dir / "other").string()}},
                              {{"setting", "[Log] files"}, {"old", "5"}, {"new", "7"}},
                              {{"setting", (m_Dir / "one.ini").string() + ": task_storage_path"},
                               {"old", (m_Dir / "a").string()},
                               {"new", (m_Dir / "b").string()}}}}}));
  EXPECT_TRUE(process->ReadUntil("The setting [Log] files is changed from \"5\" to \"7\""))
      << process->Text();
  process->Signal(SIGTERM);
  EXPECT_EQ(process->Wait(), 0);
}

TEST_F(NoxagentdTest, ServesAlsoWhenNobodyReadsItsLog) {
  const auto process = Start({"--log-level", "debug"});
  ASSERT_TRUE(IsServing(*process)) << process->Text();
  const std::string target = "/v1/" + std::string(200, 'x');
  for (int request = 0; request < 600; ++request) {  // far more text than a pipe holds
    ASSERT_EQ(StatusOf(RawClient::Ask(Socket(), "GET", target)), 404U) << request;
  }
  EXPECT_EQ(StatusOf(RawClient::Ask(Socket(), "GET", "/v1/last")), 404U);
  ASSERT_TRUE(process->ReadUntil("/v1/last: 404")) << "what waited comes when it is read";
  EXPECT_EQ(process->Text().find("dropped"), std::string::npos);
  process->Signal(SIGTERM);
  EXPECT_EQ(process->Wait(), 0);
  EXPECT_NE(process->Text().find("Unloaded the plug-in one"), std::string::npos)
      << "what was queued is written before it ends";
}

TEST_F(NoxagentdTest, LeavesNothingRunningWhenAPluginDoesNotStart) {
  m_Dir.Write("one.ini", "[Configuration]\nfail=1\n");
  const auto process = Start();
  EXPECT_EQ(process->Wait(), 1);
  EXPECT_NE(process->Text().find("noxagentd: the plug-in one: it did not start"), std::string::npos)
      << process->Text();
  EXPECT_FALSE(std::filesystem::exists(Socket()));
}

TEST_F(NoxagentdTest, EndsWithoutUnloadingAPluginThatRefuses) {
  m_Dir.Write("one.ini", "[Configuration]\nrefuse=1\n");
  const auto process = Start();
  ASSERT_TRUE(IsServing(*process)) << process->Text();
  process->Signal(SIGTERM);
  EXPECT_EQ(process->Wait(), 1);
  EXPECT_NE(process->Text().find("The plug-in one refuses to be unloaded: ending without "
                                 "unloading it"),
            std::string::npos)
      << process->Text();
}

TEST_F(NoxagentdTest, TellsTheServiceManagerHowItIs) {
  const std::string path = (m_Dir / "notify").string();
  const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  m_Variables = {"NOTIFY_SOCKET=" + path, "WATCHDOG_USEC=100000"};
  const auto process = Start();
  const auto awaits = [fd](const std::string& wanted) {
    pollfd entry{fd, POLLIN, 0};
    while (::poll(&entry, 1, 30000) == 1) {
      char buffer[1024];
      const ssize_t count = ::recv(fd, buffer, sizeof(buffer), 0);
      if (std::string(buffer, static_cast<std::size_t>(std::max<ssize_t>(0, count))).find(wanted) ==
          0) {
        return true;
      }
    }
    return false;
  };
  EXPECT_TRUE(awaits("READY=1\n"));
  EXPECT_TRUE(awaits("WATCHDOG=1\n"));
  process->Signal(SIGHUP);
  EXPECT_TRUE(awaits("RELOADING=1\n"));
  EXPECT_TRUE(awaits("READY=1\n"));
  process->Signal(SIGTERM);
  EXPECT_TRUE(awaits("STOPPING=1\n"));
  EXPECT_EQ(process->Wait(), 0);
  (void)::close(fd);
}

}  // namespace
}  // namespace NoxAgent
