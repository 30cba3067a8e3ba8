#include "agent/daemon/plugins/NotificationCenter.h"

#include "agent/daemon/process/AgentLog.h"

#include <algorithm>
#include <ctime>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {

NotificationCenter::NotificationCenter(AgentThread& thread, const Plugins& plugins)
    : m_Thread(thread), m_Plugins(plugins) {}

void NotificationCenter::Subscribe(const std::shared_ptr<Plugin>& plugin,
                                   const std::vector<long>& codes) {
  AMutexGuard guard(m_Lock);
  for (const long code : codes) {
    auto& subscribers = m_Subscribers[code];
    std::erase_if(subscribers, [&](const auto& other) {
      const auto known = other.lock();
      return known == nullptr || known == plugin;
    });
    subscribers.push_back(plugin);
  }
}

bool NotificationCenter::Post(long code, const AString& text) {
  const Notification notification{static_cast<long>(std::time(nullptr)), code, text};
  if (!m_Thread.Post([this, notification] { Deliver(notification); })) {
    ALOG(AgentLog(), BaseSDK::ALogger::Warning, "NotificationCenter",
         AString("Notification %1 (%2) is lost: too many are waiting for a plug-in to take them")
             .Arg(AString().SetNum(code, 'd'), text));
    return false;
  }
  m_Posted.fetch_add(1, std::memory_order_relaxed);
  return true;
}

void NotificationCenter::Tell(Kind kind, const AString& text, const Plugin* except) {
  m_Thread.Call([&] {
    for (const auto& plugin : m_Plugins.All()) {
      if (plugin.get() != except) {
        TellOne(*plugin, kind, 0, text);
      }
    }
  });
}

void NotificationCenter::SendOnAgentThread(Plugin& plugin, const AMsgIn& request) {
  m_Thread.Call([&] { plugin.Send(request); });
}

unsigned NotificationCenter::AddListener(Listener listener) {
  AMutexGuard guard(m_Lock);
  m_Listeners[++m_LastListener] = std::move(listener);
  return m_LastListener;
}

void NotificationCenter::RemoveListener(unsigned number) {
  AMutexGuard guard(m_Lock);
  m_Listeners.erase(number);
}

void NotificationCenter::Deliver(const Notification& notification) {
  for (const auto& plugin : SubscribersOf(notification.m_Code)) {
    TellOne(*plugin, Subscribed, notification.m_Code, notification.m_Text);
  }
  AMutexGuard guard(m_Lock);
  for (const auto& [number, listener] : m_Listeners) {
    listener(notification);
  }
}

Plugins::List NotificationCenter::SubscribersOf(long code) {
  Plugins::List list;
  AMutexGuard guard(m_Lock);
  const auto found = m_Subscribers.find(code);
  if (found != m_Subscribers.end()) {
    for (const auto& subscriber : found->second) {
      if (auto plugin = subscriber.lock()) {
        list.push_back(std::move(plugin));
      }
    }
  }
  return list;
}

void NotificationCenter::TellOne(Plugin& plugin, Kind kind, long code, const AString& text) {
  AMsgReply reply;
  AMsgIn request("INoxObject", "NotifyObject", reply);
  request.Set("kind", static_cast<long>(kind)).Set("code", code).Set("text", text);
  plugin.Send(request);
  if (reply.IsError()) {
    ALOG(
        AgentLog(), BaseSDK::ALogger::Warning, "NotificationCenter",
        AString("The plug-in %1 could not be notified of kind %2: %3")
            .Arg(plugin.Name(), AString().SetNum(static_cast<long>(kind), 'd'), reply.ErrorText()));
  }
}

}  // namespace NoxAgent
