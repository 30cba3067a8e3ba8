#include "agent/client/SocketPath.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace NoxAgent {

namespace {

std::string TextFrom(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

// Relative paths in these variables are to be ignored.
std::string AbsolutePathFrom(const char* variable) {
  const std::string value = TextFrom(variable);
  return value.rfind('/', 0) == 0 ? value : "";
}

std::string UserStateDirectory() {
  const std::string stateHome = AbsolutePathFrom("XDG_STATE_HOME");
  return (stateHome.empty() ? AbsolutePathFrom("HOME") + "/.local/state" : stateHome) + "/nox";
}

std::string UserDirectory() {
  const std::string runtime = AbsolutePathFrom("XDG_RUNTIME_DIR");
  return runtime.empty() ? UserStateDirectory() + "/run" : runtime + "/nox";
}

std::string SocketIn(const std::string& directory) {
  return directory + "/control.sock";
}

// A path that this user may not look at counts as there: it may well be.
bool MayExist(const std::string& path) {
  return ::access(path.c_str(), F_OK) == 0 || errno == EACCES;
}

}  // namespace

std::string SocketPath(const std::string& socket, const std::string& runtimeDirectory,
                       const std::string& systemDirectory) {
  if (!socket.empty()) {
    return socket;
  }
  const std::string named =
      runtimeDirectory.empty() ? TextFrom("NOX_RUNTIME_DIR") : runtimeDirectory;
  if (!named.empty()) {
    return SocketIn(named);
  }
  const std::string ofUser = SocketIn(UserDirectory());
  const std::string ofSystem = SocketIn(systemDirectory);
  if (::geteuid() == 0) {
    return ofSystem;
  }
  return MayExist(ofUser) || !MayExist(ofSystem) ? ofUser : ofSystem;
}

}  // namespace NoxAgent
