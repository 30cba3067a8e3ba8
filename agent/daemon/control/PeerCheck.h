#pragma once

#include "agent/daemon/control/Caller.h"

#include <sys/types.h>

#include <optional>

namespace NoxAgent {

/// Decides who may use the control socket, and for what: root and the agent's own user for
/// everything, the members of one group for tasks and, if they are to, for jobs. [any thread]
class PeerCheck {
 public:
  /// `groupUsesJobs`: jobs are for the members of the group too.
  explicit PeerCheck(std::optional<gid_t> group, bool groupUsesJobs = false)
      : m_Group(group), m_GroupUsesJobs(groupUsesJobs) {}

  /// The process at the other end of the socket `fd`; nothing when it may not use the socket. The
  /// kernel tells its user and groups as they were when it connected.
  std::optional<Caller> CallerAt(int fd) const;
  /// The rules by themselves, for a user and all of its groups: who may use the socket,
  bool Admits(uid_t user, const gid_t* groups, std::size_t count) const;
  /// and whether jobs are for a user who may.
  bool OpensJobsTo(uid_t user) const;

 private:
  const std::optional<gid_t> m_Group;
  const bool m_GroupUsesJobs;
};

}  // namespace NoxAgent
