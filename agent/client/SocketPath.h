// Where the agent listens.
#pragma once

#include <string>

namespace NoxAgent {

/// The socket's path:
///
/// 1. `socket`, when it is not empty;
/// 2. control.sock in `runtimeDirectory`, or in $NOX_RUNTIME_DIR, when these are not empty;
/// 3. that of an agent of the user's own, when it is there: in $XDG_RUNTIME_DIR/nox, or else in
///    "run" of the state directory ($XDG_STATE_HOME/nox, ~/.local/state/nox); root has none;
/// 4. that of the system's agent, when it is there, and for root;
/// 5. that of the user's own, for the message that there is none.
std::string SocketPath(const std::string& socket, const std::string& runtimeDirectory,
                       const std::string& systemDirectory = "/run/nox");

}  // namespace NoxAgent
