#include "agent/daemon/plugins/PluginHost.h"

#include "agent/daemon/process/AgentLog.h"

#include <AgentInterfacesV3/InterfaceIds.h>
#include <AgentInterfacesV3/MakeProxy.h>

#include <vector>

using BaseSDK::AGuid;
using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::IID_INoxScheduledTaskHandler;

namespace NoxAgent {
namespace {

constexpr const char* PluginHostSource = "PluginHost";
constexpr long Done = 1;
constexpr long Refused = -1;

}  // namespace

PluginHost::PluginHost(const Settings& settings, const Plugins& plugins,
                       NotificationCenter& notifications, HandlerCalls& handlerCalls)
    : m_Before(AgentSDK::AHost::Replace(this)),
      m_Settings(settings),
      m_Plugins(plugins),
      m_Notifications(notifications),
      m_HandlerCalls(handlerCalls) {}

PluginHost::~PluginHost() {
  (void)AgentSDK::AHost::Replace(m_Before);
}

void PluginHost::SetInitialising(std::shared_ptr<Plugin> plugin) {
  AMutexGuard guard(m_Lock);
  m_Initialising = std::move(plugin);
}

long PluginHost::Subscribe(const AString& subscriber, const long* codes, unsigned count) {
  const std::shared_ptr<Plugin> plugin = Asking();
  if (plugin == nullptr || codes == nullptr) {
    ALOG(AgentLog(), ALogger::Warning, PluginHostSource,
         AString("\"%1\" is not subscribed: a plug-in subscribes within its initialisation or "
                 "while it answers a request")
             .Arg(subscriber));
    return Refused;
  }
  m_Notifications.Subscribe(plugin, std::vector<long>(codes, codes + count));
  ALOG(AgentLog(), ALogger::Debug, PluginHostSource,
       AString("%1 of the plug-in %2 subscribed to notifications").Arg(subscriber, plugin->Name()));
  return Done;
}

long PluginHost::PostNotification(long code, const AString& text) {
  return m_Notifications.Post(code, text) ? Done : Refused;
}

AString PluginHost::GetConfigString(const AString& section, const AString& key,
                                    const AString& fallback) {
  const std::shared_ptr<Plugin> plugin = Asking();
  if (plugin == nullptr) {
    ALOG(AgentLog(), ALogger::Warning, PluginHostSource,
         AString("The setting \"%1\" is not given out: a plug-in reads its configuration within "
                 "its initialisation or while it answers a request")
             .Arg(key));
    return fallback;
  }
  return m_Settings.Resolve(plugin->Config().Ask(section, key).value_or(fallback));
}

long PluginHost::OpenObject(const AString& classId, const AGuid& interfaceId, unsigned long flags,
                            void*& object) {
  object = nullptr;
  const std::shared_ptr<Plugin> plugin = m_Plugins.FindClass(classId);
  if (flags != 0 || plugin == nullptr || !plugin->Serves(interfaceId)) {
    if (interfaceId == IID_INoxScheduledTaskHandler) {
      ALOG(AgentLog(), ALogger::Warning, PluginHostSource,
           AString("Tasks of the handler %1 are due, but no plug-in is loaded that is one of that "
                   "class")
               .Arg(classId));
    }
    return Refused;
  }
  const long result =
      Corvane::AgentInterfacesV3::MakeProxy(plugin->QueueNumber(), interfaceId, object);
  if (result > 0 && interfaceId == IID_INoxScheduledTaskHandler) {
    object = m_HandlerCalls.Track(static_cast<HandlerCalls::Handler*>(object));
  }
  return result;
}

std::shared_ptr<Plugin> PluginHost::Asking() {
  if (Plugin* const current = Plugin::Current(); current != nullptr) {
    return current->shared_from_this();
  }
  AMutexGuard guard(m_Lock);
  return m_Initialising;
}

}  // namespace NoxAgent
