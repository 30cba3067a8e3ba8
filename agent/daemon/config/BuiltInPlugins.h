// The plug-ins that come with the agent: what it loads, and how they are set up, when no
// configuration says otherwise.
#pragma once

#include "agent/daemon/config/PluginConfig.h"

#include <BaseSDK/AString.h>

#include <span>

namespace NoxAgent {

/// One of the plug-ins that come with the agent. Its values stand in for a section "[Plugin ...]"
/// and a configuration file of its own.
struct BuiltInPlugin {
  BaseSDK::AString m_Name;
  BaseSDK::AString m_FileName;
  BaseSDK::AString m_ClassId;
  PluginConfig::Values m_Config;

  /// In the order of loading: the scheduler before handlers. They are then unloaded while it is
  /// still there to be told how their last runs ended.
  static std::span<const BuiltInPlugin> All();
  /// Null when no such plug-in comes with the agent.
  static const BuiltInPlugin* Find(const BaseSDK::AString& name);
};

}  // namespace NoxAgent
