#include <AgentSDK/AHost.h>
#include <AgentSDK/APluginMgr.h>

namespace AgentSDK {

BaseSDK::AString APluginMgr::GetConfigString(const BaseSDK::AString& section,
                                             const BaseSDK::AString& key,
                                             const BaseSDK::AString& fallback) const {
  AHost* const host = AHost::Current();
  return host == nullptr ? fallback : host->GetConfigString(section, key, fallback);
}

}  // namespace AgentSDK
