// What to do when the agent's socket may not be opened.
#pragma once

#include <string>

namespace NoxAgent {

/// In words, for one line: who may use the socket and how to become one of them. Where the socket
/// itself cannot be seen, its directory tells.
std::string SocketDenialHint(const std::string& socketPath);

}  // namespace NoxAgent
