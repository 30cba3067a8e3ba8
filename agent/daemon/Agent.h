#pragma once

#include "agent/daemon/AgentThread.h"
#include "agent/daemon/config/Settings.h"
#include "agent/daemon/control/Api.h"
#include "agent/daemon/control/ControlServer.h"
#include "agent/daemon/control/ControlSocket.h"
#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/control/FilesRoute.h"
#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/plugins/HandlerCalls.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/PluginHost.h"
#include "agent/daemon/plugins/PluginLifecycle.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/process/LockFile.h"
#include "agent/daemon/process/ServiceManager.h"
#include "agent/daemon/process/SignalInbox.h"
#include "agent/daemon/returns/TaskReturner.h"
#include "agent/daemon/store/TaskStore.h"

#include <memory>
#include <optional>

namespace NoxAgent {

/// The agent as a whole, from start to stop. It owns all the parts of the daemon; main makes one,
/// calls Run and ends the process with what Run says.
class Agent {
 public:
  /// Makes the directories, locks them and listens on the control socket; loads nothing. Throws
  /// AgentError. The log is set up already.
  Agent(const Options& options, Environment environment, Settings settings);
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  /// Loads the plug-ins, serves until a signal asks to stop, unloads the plug-ins. True when all
  /// went well; false when a plug-in could not be unloaded: the process is then to end at once,
  /// without destroying anything. Throws AgentError when the start fails; all is down again then.
  /// [main thread, once]
  bool Run();

 private:
  /// Keeps other agents away: the state directory and the directory of the socket are each used by
  /// one agent at a time.
  struct Locks {
    explicit Locks(const Settings& settings);

    std::optional<LockFile> m_State;
    std::optional<LockFile> m_Runtime;
  };

  void Start();
  void Serve();
  bool Stop();
  /// Carries out a policy refresh. Gives the settings that have changed and take effect at the next
  /// start only. Throws AgentError, also logged, when a configuration is bad. [any thread]
  SettingChanges Refresh() NOX_EXCLUDES(m_RefreshLock);
  SettingChanges ReadConfigurationAgain();
  Json Status(bool withTasks) const;

  const Options m_Options;
  const Environment m_Environment;
  const Settings m_Settings;
  const long m_StartTime;
  SignalInbox m_Signals;
  const ServiceManager m_ServiceManager;
  const Locks m_Locks;
  const ControlSocket m_Socket;

  TaskReturns m_Returns;
  TaskStore m_Store;  ///< made first, gone last: plug-ins use files through it
  Plugins m_Plugins;
  HandlerCalls m_HandlerCalls;
  EnumerationHandles m_Handles;
  AgentThread m_Thread;
  NotificationCenter m_Notifications;
  PluginHost m_Host;
  PluginLifecycle m_Lifecycle;
  OperationRoute m_Operations;
  FilesRoute m_Files;
  TasksRoute m_Tasks;
  DisableRoute m_Disable;
  TaskReturner m_Returner;
  Api m_Api;
  std::unique_ptr<ControlServer> m_Server;

  BaseSDK::AMutex m_RefreshLock;  ///< one refresh at a time
};

}  // namespace NoxAgent
