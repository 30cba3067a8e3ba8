#pragma once

#include "agent/daemon/AgentThread.h"
#include "agent/daemon/plugins/Plugins.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace NoxAgent {

/// Tells plug-ins what happens: the events of the agent's life, and the notifications that plug-ins
/// post. It does so on the agent thread. Other parts of the agent that want to know what is posted
/// add a listener.
class NotificationCenter {
 public:
  /// The kinds of NotifyObject.
  enum Kind : long {
    StartUpFinished = 0,
    RefreshStarted = 1,
    RefreshFinished = 2,
    RegistrationStarted = 4,
    RegistrationFinished = 5,
    UnregistrationStarted = 6,
    UnregistrationFinished = 7,
    Subscribed = 10,
  };

  /// A notification that was posted, as listeners see it.
  struct Notification {
    long m_Time;  ///< seconds since the epoch
    long m_Code;
    BaseSDK::AString m_Text;
  };
  /// Called on the agent thread and under a lock: it must pass the notification on and return, and
  /// not add or remove listeners. What the notification tells may not be safe yet
  /// (AFileSystem::MakeSafe): plug-ins are told by requests, which make it so.
  using Listener = std::function<void(const Notification&)>;

  NotificationCenter(AgentThread& thread, const Plugins& plugins);

  /// From now on the plug-in is told when one of `codes` is posted, as kind 10. [any thread]
  void Subscribe(const std::shared_ptr<Plugin>& plugin, const std::vector<long>& codes)
      NOX_EXCLUDES(m_Lock);
  /// Takes the notification; subscribers and listeners hear of it later. False when too many are
  /// waiting. [any thread, locks held]
  bool Post(long code, const BaseSDK::AString& text);

  /// Tells every plug-in, or all but `except`, and returns when they have been told. [any thread,
  /// no lock held that a plug-in takes]
  void Tell(Kind kind, const BaseSDK::AString& text, const Plugin* except = nullptr);
  /// Has the plug-in answer the request on the agent thread, and returns when it has. [any thread,
  /// no lock held that a plug-in takes]
  void SendOnAgentThread(Plugin& plugin, const Corvane::AgentInterfacesV3::AMsgIn& request);

  /// Returns the number by which RemoveListener removes it. Once RemoveListener has returned, the
  /// listener is not called any more.
  unsigned AddListener(Listener listener) NOX_EXCLUDES(m_Lock);
  void RemoveListener(unsigned number) NOX_EXCLUDES(m_Lock);

  unsigned long Posted() const { return m_Posted; }

 private:
  void Deliver(const Notification& notification) NOX_EXCLUDES(m_Lock);
  Plugins::List SubscribersOf(long code) NOX_EXCLUDES(m_Lock);
  static void TellOne(Plugin& plugin, Kind kind, long code, const BaseSDK::AString& text);

  AgentThread& m_Thread;
  const Plugins& m_Plugins;
  std::atomic<unsigned long> m_Posted{0};

  BaseSDK::AMutex m_Lock;
  std::map<long, std::vector<std::weak_ptr<Plugin>>> m_Subscribers NOX_GUARDED_BY(m_Lock);
  std::map<unsigned, Listener> m_Listeners NOX_GUARDED_BY(m_Lock);
  unsigned m_LastListener NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace NoxAgent
