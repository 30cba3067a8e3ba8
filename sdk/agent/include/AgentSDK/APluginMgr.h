#pragma once

#include <BaseSDK/AString.h>

namespace AgentSDK {

/// A plug-in's way to its configuration, which the agent keeps. It has no state: make one wherever
/// it is needed.
class APluginMgr {
 public:
  /// The value of a key of this plug-in's configuration; `fallback` when the key is not there or
  /// there is no host. [any thread]
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) const;
};

}  // namespace AgentSDK
