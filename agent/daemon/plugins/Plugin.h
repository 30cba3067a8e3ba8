#pragma once

#include "agent/daemon/config/PluginConfig.h"
#include "agent/daemon/config/Settings.h"
#include "agent/daemon/plugins/PluginLibrary.h"
#include "agent/daemon/plugins/TaskGate.h"

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <BaseSDK/AGuid.h>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace NoxAgent {

/// One plug-in: its shared object, its message queue and its configuration. All that the agent asks
/// of the plug-in's object goes through the queue.
class Plugin : public std::enable_shared_from_this<Plugin> {
 public:
  using InterfaceTable = Corvane::AgentInterfacesV3::AInterfaceTable;

  /// Which plug-in the calling thread is working for: one that is being initialised or taken down,
  /// or that answers a request. Null when that cannot be told, as on a plug-in's own thread.
  static Plugin* Current();

  /// Reads the configuration, loads nothing. Throws AgentError.
  Plugin(PluginSettings settings, int queueNumber);
  /// A plug-in that was not unloaded stays in memory until the process ends.
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  const PluginSettings& Settings() const { return m_Settings; }
  const BaseSDK::AString& Name() const { return m_Settings.m_Name; }
  PluginConfig& Config() { return *m_Config; }
  int QueueNumber() const { return m_Queue.Number(); }

  /// Loads the shared object and creates the plug-in's object. Throws AgentError that says what is
  /// wrong; whatever was created is then taken down again, unless a thread is still at work in it
  /// after `milliseconds`. [main thread]
  void Load(unsigned long milliseconds);
  /// Takes the object down by force and unloads the shared object; false when it refuses, and both
  /// stay. REQUIRES: CloseQueue has returned true, and no thread is at work in it. [main thread]
  bool Unload();
  /// Keeps new requests away and waits for those under way, for `milliseconds` at most; false when
  /// one has not come back by then. [any thread]
  bool CloseQueue(unsigned long milliseconds) { return m_Queue.Close(milliseconds); }

  /// Has the object answer the request, on the calling thread; logs what a notification means to
  /// the tasks of a scheduler. [any thread; NotifyObject: agent thread]
  void Send(const Corvane::AgentInterfacesV3::AMsgIn& request);

  /// The interfaces that the object serves, parents first; constant once loaded.
  const std::vector<const InterfaceTable*>& Interfaces() const { return m_Interfaces; }
  bool Serves(const BaseSDK::AGuid& interfaceId) const;
  bool Serves(std::string_view interfaceName) const;

  unsigned long Requests() const { return m_Requests; }
  unsigned long Errors() const { return m_Errors; }
  unsigned long Notifications() const { return m_Notifications; }

 private:
  void TakeDown();
  void AskForInterfaces();
  void Answer(const Corvane::AgentInterfacesV3::AMsgIn& request);
  std::optional<TaskGate::Change> ChangeBy(const Corvane::AgentInterfacesV3::AMsgIn& notification);
  void Notify(const Corvane::AgentInterfacesV3::AMsgIn& notification);

  const PluginSettings m_Settings;
  const std::unique_ptr<PluginConfig> m_Config;
  Corvane::AgentInterfacesV3::AMsgQueue m_Queue;
  std::optional<PluginLibrary> m_Library;
  std::vector<const InterfaceTable*> m_Interfaces;
  TaskGate m_Gate;  ///< of a scheduler; agent thread alone

  /// Counters for the status; nothing is decided by them.
  std::atomic<unsigned long> m_Requests{0};
  std::atomic<unsigned long> m_Errors{0};
  std::atomic<unsigned long> m_Notifications{0};
};

}  // namespace NoxAgent
