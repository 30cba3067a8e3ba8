#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Directories that the agent makes for itself and its plug-ins.
struct Directories {
  /// For the agent and its group alone: jobs and their output are nobody else's business.
  static constexpr unsigned Private = 0750;

  /// Makes `path` and what is missing above it, with `mode` whatever the umask. One that is
  /// there already stays as it is. Throws AgentError that names the first one that cannot be made.
  static void Make(const BaseSDK::AString& path, unsigned mode);
};

}  // namespace NoxAgent
