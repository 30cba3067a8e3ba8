#pragma once

#include <sys/types.h>

#include <optional>

namespace NoxAgent {

/// Decides who may use the control socket: root, the agent's own user, and the members of one
/// group. [any thread]
class PeerCheck {
 public:
  explicit PeerCheck(std::optional<gid_t> group) : m_Group(group) {}

  /// Whether the process at the other end of the socket `fd` may use it. The kernel tells its user
  /// and groups as they were when it connected.
  bool Admits(int fd) const;
  /// The process that connected; 0 when that is not known.
  static pid_t ProcessOf(int fd);
  /// The rule by itself, for a user and all of its groups.
  bool Admits(uid_t user, const gid_t* groups, std::size_t count) const;

 private:
  std::optional<gid_t> m_Group;
};

}  // namespace NoxAgent
