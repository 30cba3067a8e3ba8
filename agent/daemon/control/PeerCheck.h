#pragma once

#include <sys/types.h>

#include <optional>

namespace NoxAgent {

/// Who may use the control socket: root, the agent's own user, and the members of one group.
class PeerCheck {
 public:
  explicit PeerCheck(std::optional<gid_t> group) : m_Group(group) {}

  /// Asks the kernel who connected; the answer was fixed when they did.
  bool Admits(int fd) const;
  /// The process that connected, 0 when it cannot be told.
  static pid_t ProcessOf(int fd);
  bool Admits(uid_t user, const gid_t* groups, std::size_t count) const;

 private:
  std::optional<gid_t> m_Group;
};

}  // namespace NoxAgent
