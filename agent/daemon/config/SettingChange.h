#pragma once

#include <BaseSDK/AString.h>

#include <vector>

namespace NoxAgent {

struct Settings;

/// A setting whose configured value differs from the one in force.
struct SettingChange {
  BaseSDK::AString m_Name;  ///< "[Agent] state_dir"
  BaseSDK::AString m_Old;   ///< in force; empty when it was not set
  BaseSDK::AString m_New;   ///< empty when it is not set any more

  bool operator==(const SettingChange&) const = default;
};

using SettingChanges = std::vector<SettingChange>;

/// Which of the agent's settings differ between the two and take effect only at its next start.
/// `now` is what the configuration says now.
SettingChanges FindRestartChanges(const Settings& inForce, const Settings& now);

}  // namespace NoxAgent
