#pragma once

#include "agent/daemon/config/Settings.h"
#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/plugins/HandlerCalls.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/PluginHost.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/store/TaskStore.h"

namespace NoxAgent {

/// Loads the plug-ins at the start and unloads them at the end, and tells the other plug-ins of
/// both. It also carries out a policy refresh.
///
/// [main thread] unless stated.
class PluginLifecycle {
 public:
  /// How long each thing that goes on in a plug-in may take before the agent gives up waiting for
  /// it.
  static constexpr unsigned long DrainMilliseconds = 10000;

  PluginLifecycle(Plugins& plugins, NotificationCenter& notifications, PluginHost& host,
                  HandlerCalls& handlerCalls, EnumerationHandles& handles, TaskStore& store,
                  unsigned long drainMilliseconds = DrainMilliseconds);

  /// Loads the plug-ins in order and tells all that the start-up has finished. Throws AgentError
  /// when one does not come up; those before it are then still to be unloaded.
  void LoadAll(const Settings& settings);

  /// A policy refresh: tells all that it has started, has `readAgain` read the agent's
  /// configuration, reads those of the plug-ins, tells all that it has finished, also when a
  /// configuration is bad. Then throws the AgentError; the old configuration stands where the new
  /// one is bad. [any thread, one at a time]
  void Refresh(const std::function<void()>& readAgain);

  /// Unloads all in reverse order. False, with the reason logged, when one cannot be unloaded
  /// safely: then the process is to end as it stands.
  bool UnloadAll();

 private:
  std::shared_ptr<Plugin> Make(const PluginSettings& settings, const Settings& all);
  void Load(const std::shared_ptr<Plugin>& plugin);
  void PrepareTaskDirectory(Plugin& plugin, const Settings& settings);
  bool Unload(const std::shared_ptr<Plugin>& plugin);
  bool WaitForHandlers();
  bool WaitForThreads();
  static void CallAll(const Plugins::List& plugins, const char* operation);

  Plugins& m_Plugins;
  NotificationCenter& m_Notifications;
  PluginHost& m_Host;
  HandlerCalls& m_HandlerCalls;
  EnumerationHandles& m_Handles;
  TaskStore& m_Store;
  const unsigned long m_DrainMilliseconds;
  int m_LastQueue = 0;
};

}  // namespace NoxAgent
