#pragma once

#include <BaseSDK/AString.h>

namespace AgentSDK {

/// A plug-in's view of the agent's plug-in management. Has no state; make one where needed.
class APluginMgr {
 public:
  /// The value of a key of this plug-in's configuration; `fallback` when the key is not there or
  /// there is no host. [any thread]
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) const;
};

}  // namespace AgentSDK
