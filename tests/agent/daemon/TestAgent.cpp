#include "tests/agent/daemon/TestAgent.h"

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
      m_Api(m_Operations, m_Files, m_Tasks, m_Notifications,
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

// The same shared object cannot be loaded twice, a copy of it can.
std::string TestAgent::CopyOf(const std::string& library, const std::string& name) const {
  const std::string path = PluginPath(library);
  const std::string copy = (m_Dir / (name + ".so")).string();
  std::error_code missing;
  return std::filesystem::copy_file(path, copy, missing) ? copy : path;
}

TestAgent& TestAgent::Load() {
  m_Lifecycle.LoadAll(m_Settings);
  return *this;
}

TestAgent& TestAgent::Serve(const ControlPatience& patience) {
  Load();
  m_Socket = std::make_unique<ControlSocket>(m_Settings.SocketPath(), AString());
  m_Server = std::make_unique<ControlServer>(m_Socket->Fd(), PeerCheck(std::nullopt), m_Api,
                                             m_Notifications, patience);
  m_Server->Start();
  return *this;
}

ApiResponse TestAgent::Ask(const std::string& method, const std::string& target,
                           const std::string& body) {
  return m_Api.Handle({method, target, body});
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

void TestAgent::Settle() {
  m_Thread.Call([] {});
}

}  // namespace NoxAgent
