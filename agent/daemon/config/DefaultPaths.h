#pragma once

#include "agent/daemon/process/Environment.h"

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Where the agent keeps its files unless it is told otherwise. docs/operation.md lists these
/// places. All are absolute.
struct DefaultPaths {
  /// root: /var/lib/nox; a user: $XDG_STATE_HOME/nox, else ~/.local/state/nox. Throws AgentError
  /// when there is neither of these nor HOME.
  static BaseSDK::AString StateDir(const Environment& environment);
  /// root: /run/nox; a user: $XDG_RUNTIME_DIR/nox, else `stateDir`/run.
  static BaseSDK::AString RuntimeDir(const Environment& environment,
                                     const BaseSDK::AString& stateDir);
  /// Full path of the shared object `fileName`: where plug-ins are installed, seen from the
  /// program, or else ../lib, as in a build tree. When it is in neither, the first of them.
  static BaseSDK::AString Plugin(const Environment& environment, const BaseSDK::AString& fileName);
};

}  // namespace NoxAgent
