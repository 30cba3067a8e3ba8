// What to do when the agent's socket may not be opened.
#pragma once

#include <string>

namespace NoxAgent {

/// For one line of an error message: who may use the socket and how to become one of them. Where
/// the socket itself cannot be looked at, it goes by its directory.
std::string SocketDenialHint(const std::string& socketPath);

}  // namespace NoxAgent
