#pragma once

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <optional>

namespace NoxAgent {

/// The listening socket in the file system: mode 0660, and of the group that may use it.
class ControlSocket {
 public:
  /// Binds and listens. A socket file that is there already is left over and is replaced: the
  /// caller holds the lock on its directory, so no other agent uses it. `group` is the name of the
  /// group that may use the socket, empty for none. Throws AgentError.
  ControlSocket(const BaseSDK::AString& path, const BaseSDK::AString& group);
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;
  /// Removes the socket from the file system.
  ~ControlSocket();

  int Fd() const { return m_Fd; }
  std::optional<gid_t> Group() const { return m_Group; }

 private:
  void Bind();
  [[noreturn]] void Fail(const char* what, int error) const;

  const BaseSDK::AString m_Path;
  std::optional<gid_t> m_Group;
  int m_Fd = -1;
};

}  // namespace NoxAgent
