#pragma once

#include "agent/daemon/config/Settings.h"
#include "agent/daemon/plugins/HandlerCalls.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/Plugins.h"

#include <AgentSDK/AHost.h>
#include <BaseSDK/AMutex.h>

#include <memory>

namespace NoxAgent {

/// The agent as plug-ins see it: the host behind NTracker, APluginMgr and CIGetObjectInterface.
///
/// In place as the process's host while it lives.
class PluginHost : public AgentSDK::AHost {
 public:
  PluginHost(const Settings& settings, const Plugins& plugins, NotificationCenter& notifications,
             HandlerCalls& handlerCalls);
  ~PluginHost() override;

  /// Names the plug-in that is being initialised, null when none is. What a thread without a
  /// plug-in of its own asks meanwhile counts as asked by it: it may have started that thread.
  /// [main thread]
  void SetInitialising(std::shared_ptr<Plugin> plugin) NOX_EXCLUDES(m_Lock);

  long Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count) override;
  long PostNotification(long code, const BaseSDK::AString& text) override;
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

 private:
  std::shared_ptr<Plugin> Asking() NOX_EXCLUDES(m_Lock);

  AgentSDK::AHost* const m_Before;
  const Settings& m_Settings;
  const Plugins& m_Plugins;
  NotificationCenter& m_Notifications;
  HandlerCalls& m_HandlerCalls;

  BaseSDK::AMutex m_Lock;
  std::shared_ptr<Plugin> m_Initialising NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
