// Where the agent listens, by the same rules as the agent's own.
#pragma once

#include <string>

namespace NoxAgent {

/// The directory of the agent's socket when none is named: /run/nox for root; for others "nox" in
/// $XDG_RUNTIME_DIR, or else "run" in the state directory ($XDG_STATE_HOME/nox,
/// ~/.local/state/nox).
std::string DefaultRuntimeDirectory();

/// The socket's path. `socket` is taken as it is when it is not empty; otherwise the socket lies in
/// `runtimeDirectory`, or in the default one when that is empty too.
std::string SocketPath(const std::string& socket, const std::string& runtimeDirectory);

}  // namespace NoxAgent
