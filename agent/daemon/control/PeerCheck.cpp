#include "agent/daemon/control/PeerCheck.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace NoxAgent {
namespace {

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

}  // namespace

bool PeerCheck::Admits(int fd) const {
  ucred peer{};
  socklen_t size = sizeof(peer);
  if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    return false;
  }
  const std::vector<gid_t> groups = PeerGroups(fd, peer.gid);
  return Admits(peer.uid, groups.data(), groups.size());
}

bool PeerCheck::Admits(uid_t user, const gid_t* groups, std::size_t count) const {
  const bool isMember =
      m_Group.has_value() && std::find(groups, groups + count, *m_Group) != groups + count;
  return user == 0 || user == ::geteuid() || isMember;
}

}  // namespace NoxAgent
