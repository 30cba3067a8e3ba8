#pragma once

#include "agent/daemon/control/Api.h"
#include "agent/daemon/control/ControlServer.h"
#include "agent/daemon/control/ControlSocket.h"
#include "agent/daemon/plugins/PluginLifecycle.h"
#include "agent/daemon/returns/TaskReturner.h"
#include "agent/library/Json.h"
#include "tests/support/TempDir.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace NoxAgent {

/// The agent inside a test's process, put together as noxagentd does it, with plug-ins that record
/// what they are told (tests/plugins/recording).
class TestAgent {
 public:
  static constexpr const char* ClassId = "{AAAAAAAA-0000-0000-0000-000000000001}";

  /// A task that runs daily, from 2035 on, by the second handler.
  static inline const std::string DailyTask =
      "<Task><HandlerCLSID>{AAAAAAAA-0000-0000-0000-000000000002}</HandlerCLSID>"
      "<Schedule><Trigger Type=\"1\"><BeginDate>2035/01/01 08:00:00</BeginDate>"
      "<DaysInterval>1</DaysInterval></Trigger></Schedule></Task>";

  /// The built shared object `name`.so.
  static std::string PluginPath(const std::string& name);

  /// How long whatever does not come back is waited for: hardly, by tests that see the agent give
  /// up; by all others as long as it takes a slow machine.
  static constexpr unsigned long ShortDrainMilliseconds = 100;
  static constexpr unsigned long LongDrainMilliseconds = 60000;

  explicit TestAgent(unsigned long drainMilliseconds = LongDrainMilliseconds);
  ~TestAgent();

  /// A plug-in to load; `config` holds the lines of its section "Configuration". The first one has
  /// the class identifier ClassId, the next 2 and so on.
  TestAgent& Add(const std::string& name, const std::string& config = {},
                 const std::string& library = "RecordingPlugin");
  /// The real scheduler, called "scheduler", and its directory "state/tasks" for files "*.vsk".
  TestAgent& AddScheduler();
  /// Loads what was added; the real scheduler has then read its tasks. Throws as PluginLifecycle
  /// does.
  TestAgent& Load();
  /// Load, then serve the control socket. Only tests of its patience give it a short one: a machine
  /// that stalls would make clients of all others too slow.
  static constexpr ControlPatience LongPatience{600, 600, 600, 600};
  TestAgent& Serve(const ControlPatience& patience = LongPatience,
                   const PeerCheck& peers = PeerCheck(std::nullopt));

  std::string SocketPath() const { return m_Settings.SocketPath().ToUtf8(); }
  std::string ConfigPath(const std::string& plugin) const;

  /// The answer of the API, without a socket; the body of the answer as JSON.
  ApiResponse Ask(const std::string& method, const std::string& target,
                  const std::string& body = {}, const Caller& caller = {0, true});
  Json Call(const std::string& operation, const Json& arguments, const std::string& plugin = "one");
  /// The code of the error that the call is answered with; empty when it is answered with none.
  std::string CallError(const std::string& operation, const Json& arguments);
  /// What the plug-in was told so far.
  std::string Report(const std::string& plugin = "one");
  /// Starts a request that does not come back before Release. REQUIRES: the plug-in "one".
  void Hold();
  void Release();
  /// Keeps every thread of the server at work until ReleaseEveryThread. REQUIRES: Serve; the
  /// plug-in "one".
  void HoldEveryThread();
  void ReleaseEveryThread();
  /// What is on its way on the agent thread has arrived.
  void Settle();

  TestSupport::TempDir m_Dir;
  std::thread m_Held;
  std::vector<std::thread> m_EachHeld;
  Settings m_Settings;
  AgentThread m_Thread;
  TaskReturns m_Returns;
  TaskStore m_Store;
  Plugins m_Plugins;
  HandlerCalls m_HandlerCalls;
  EnumerationHandles m_Handles;
  NotificationCenter m_Notifications{m_Thread, m_Plugins};
  PluginHost m_Host{m_Settings, m_Plugins, m_Notifications, m_HandlerCalls};
  PluginLifecycle m_Lifecycle;
  OperationRoute m_Operations{m_Plugins, m_Notifications, m_Handles, m_Store, m_Returns};
  FilesRoute m_Files{m_Store, m_Operations};
  TasksRoute m_Tasks{m_Plugins, m_Store, m_Operations, m_Returns};
  DisableRoute m_Disable{m_Plugins, m_Store, m_Returns};
  TaskReturner m_Returner{m_Plugins, m_Store, m_Returns};
  Api m_Api;
  std::unique_ptr<ControlSocket> m_Socket;
  std::unique_ptr<ControlServer> m_Server;

 private:
  std::string CopyOf(const std::string& library, const std::string& name) const;

  bool m_HasScheduler = false;
};

}  // namespace NoxAgent
