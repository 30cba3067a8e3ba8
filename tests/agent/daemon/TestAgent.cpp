#include "tests/agent/daemon/TestAgent.h"

#include "tests/agent/daemon/control/RawClient.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using BaseSDK::AString;
namespace NoxAgent {

std::string TestAgent::PluginPath(const std::string& name) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path().parent_path() / "lib" / (name + ".so");
}

TestAgent::TestAgent(unsigned long drainMilliseconds)
    : m_Lifecycle(m_Plugins, m_Notifications, m_Host, m_HandlerCalls, m_Handles, m_Store,
                  drainMilliseconds),
      m_Api(m_Operations, m_Files, m_Tasks, m_Disable, m_Notifications,
            {[](bool) {
               return Json{{"version", "test"}};
             },
             [this] {
               m_Lifecycle.Refresh([] {});
               return SettingChanges();
             }}) {
  m_Settings.m_StateDir = AString::FromUtf8((m_Dir / "state").string());
  m_Settings.m_RuntimeDir = AString::FromUtf8(m_Dir.Path().string());
  (void)::mkfifo((m_Dir / "hold").c_str(), 0600);
}

TestAgent::~TestAgent() {
  if (m_Server != nullptr) {
    (void)m_Server->Stop(30000);
  }
  m_Server.reset();
  (void)m_Lifecycle.UnloadAll();
}

std::string TestAgent::ConfigPath(const std::string& plugin) const {
  return (m_Dir / (plugin + ".ini")).string();
}

TestAgent& TestAgent::Add(const std::string& name, const std::string& config,
                          const std::string& library) {
  const std::string hold = library == "RecordingPlugin" ? "hold=" + (m_Dir / "hold").string() : "";
  m_Dir.Write(name + ".ini", "[Configuration]\n" + config + hold + "\n");
  PluginSettings plugin;
  plugin.m_Name = AString::FromUtf8(name);
  plugin.m_Path = AString::FromUtf8(CopyOf(library, name));
  plugin.m_ConfigFile = AString::FromUtf8(ConfigPath(name));
  plugin.m_ClassId =
      AString("{AAAAAAAA-0000-0000-0000-00000000000%1}")
          .Arg(AString().SetNum(static_cast<unsigned long>(m_Settings.m_Plugins.size() + 1), 'x'));
  m_Settings.m_Plugins.push_back(plugin);
  return *this;
}

TestAgent& TestAgent::AddScheduler() {
  std::filesystem::create_directories(m_Dir / "state/tasks");
  m_HasScheduler = true;
  return Add("scheduler", "task_storage_path=%installdir%/tasks\ntask_file_extension=.vsk\n",
             "NoxTaskScheduler");
}

// The same shared object cannot be loaded twice, a copy of it can.
std::string TestAgent::CopyOf(const std::string& library, const std::string& name) const {
  const std::string path = PluginPath(library);
  const std::string copy = (m_Dir / (name + ".so")).string();
  std::error_code missing;
  return std::filesystem::copy_file(path, copy, missing) ? copy : path;
}

TestAgent& TestAgent::Load() {
  m_Lifecycle.LoadAll(m_Settings);
  while (m_HasScheduler && !m_Store.Files()->Readings().Next()) {
    std::this_thread::yield();
  }
  return *this;
}

TestAgent& TestAgent::Serve(const ControlPatience& patience, const PeerCheck& peers) {
  Load();
  m_Socket = std::make_unique<ControlSocket>(m_Settings.SocketPath(), AString());
  m_Server =
      std::make_unique<ControlServer>(m_Socket->Fd(), peers, m_Api, m_Notifications, patience);
  m_Server->Start();
  return *this;
}

ApiResponse TestAgent::Ask(const std::string& method, const std::string& target,
                           const std::string& body, const Caller& caller) {
  return m_Api.Handle({method, target, body, caller});
}

Json TestAgent::Call(const std::string& operation, const Json& arguments,
                     const std::string& plugin) {
  return Json::Parse(
      Ask("POST", "/v1/" + plugin + "/INoxTaskScheduler/" + operation, arguments.Dump()).m_Body);
}

std::string TestAgent::CallError(const std::string& operation, const Json& arguments) {
  const Json answer = Call(operation, arguments);
  return answer.Has("error") ? answer["error"]["code"].Text() : std::string();
}

std::string TestAgent::Report(const std::string& plugin) {
  const ApiResponse answer = Ask("POST", "/v1/" + plugin + "/INoxObject/ObjectDebugInfo");
  return Json::Parse(answer.m_Body)["out"]["report"].Text();
}

void TestAgent::Hold() {
  m_Held = std::thread([this] { (void)Call("GetTaskXML", {{"taskId", "hold"}}); });
  while (Report().find("holding") == std::string::npos) {
    std::this_thread::yield();
  }
}

void TestAgent::Release() {
  (void)::close(::open((m_Dir / "hold").c_str(), O_WRONLY | O_CLOEXEC));
  if (m_Held.joinable()) {
    m_Held.join();
  }
}

void TestAgent::HoldEveryThread() {
  for (unsigned number = 0; number < ControlServer::Workers; ++number) {
    // One that waits for its thread too long, as on a slow machine, asks again.
    m_EachHeld.emplace_back([this] {
      unsigned status = HttpStatus::Unavailable;
      while (status == HttpStatus::Unavailable) {
        status = StatusOf(RawClient::Ask(
            SocketPath(), "POST", "/v1/one/INoxTaskScheduler/GetTaskXML", R"({"taskId":"hold"})"));
      }
      EXPECT_EQ(status, HttpStatus::Ok);
    });
  }
  const auto isEachHeld = [this] {
    unsigned count = 0;
    const std::string report = Report();
    for (std::size_t at = 0; (at = report.find("holding", at)) != std::string::npos; ++at) {
      ++count;
    }
    return count == ControlServer::Workers;
  };
  while (!isEachHeld()) {
    std::this_thread::yield();
  }
}

void TestAgent::ReleaseEveryThread() {
  // Open for writing until the last of them has come there to read.
  const int pipe = ::open((m_Dir / "hold").c_str(), O_RDWR | O_CLOEXEC);
  for (std::thread& held : m_EachHeld) {
    held.join();
  }
  (void)::close(pipe);
}

void TestAgent::Settle() {
  m_Thread.Call([] {});
}

}  // namespace NoxAgent
