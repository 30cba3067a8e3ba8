#include "agent/daemon/control/PeerCheck.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace NoxAgent {
namespace {

std::optional<ucred> PeerOf(int fd) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  const bool known = ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
  return known ? std::optional(peer) : std::nullopt;
}

std::vector<gid_t> PeerGroups(int fd, gid_t primary) {
  std::vector<gid_t> groups(64);
  auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
  int result = ::getsockopt(fd, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
  if (result != 0 && errno == ERANGE) {  // `size` says now how much it takes
    groups.resize(size / sizeof(gid_t));
    result = ::getsockopt(fd, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
  }
  groups.resize(result == 0 ? size / sizeof(gid_t) : 0);
  groups.push_back(primary);
  return groups;
}

bool IsAgentOrRoot(uid_t user) {
  return user == 0 || user == ::geteuid();
}

}  // namespace

std::optional<Caller> PeerCheck::CallerAt(int fd) const {
  const std::optional<ucred> peer = PeerOf(fd);
  if (!peer.has_value()) {
    return std::nullopt;
  }
  const std::vector<gid_t> groups = PeerGroups(fd, peer->gid);
  return Admits(peer->uid, groups.data(), groups.size())
             ? std::optional(Caller{peer->pid, OpensJobsTo(peer->uid)})
             : std::nullopt;
}

bool PeerCheck::Admits(uid_t user, const gid_t* groups, std::size_t count) const {
  const bool isMember =
      m_Group.has_value() && std::find(groups, groups + count, *m_Group) != groups + count;
  return IsAgentOrRoot(user) || isMember;
}

bool PeerCheck::OpensJobsTo(uid_t user) const {
  return IsAgentOrRoot(user) || m_GroupUsesJobs;
}

}  // namespace NoxAgent
