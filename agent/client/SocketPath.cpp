#include "agent/client/SocketPath.h"

#include <unistd.h>

#include <cstdlib>

namespace NoxAgent {

namespace {

// Relative paths in these variables are to be ignored.
std::string AbsolutePathFrom(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::string UserStateDirectory() {
  const std::string stateHome = AbsolutePathFrom("XDG_STATE_HOME");
  return (stateHome.empty() ? AbsolutePathFrom("HOME") + "/.local/state" : stateHome) + "/nox";
}

}  // namespace

std::string DefaultRuntimeDirectory() {
  if (geteuid() == 0) {
    return "/run/nox";
  }
  const std::string runtime = AbsolutePathFrom("XDG_RUNTIME_DIR");
  return runtime.empty() ? UserStateDirectory() + "/run" : runtime + "/nox";
}

std::string SocketPath(const std::string& socket, const std::string& runtimeDirectory) {
  if (!socket.empty()) {
    return socket;
  }
  const std::string directory =
      runtimeDirectory.empty() ? DefaultRuntimeDirectory() : runtimeDirectory;
  return directory + "/control.sock";
}

}  // namespace NoxAgent
