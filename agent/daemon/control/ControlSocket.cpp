#include "agent/daemon/control/ControlSocket.h"

#include "agent/daemon/AgentError.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr int Backlog = 64;
constexpr mode_t Mode = 0660;

gid_t FindGroup(const AString& name) {
  std::vector<char> buffer(65536);
  group entry{};
  group* found = nullptr;
  const int error =
      ::getgrnam_r(name.ToUtf8().c_str(), &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) {
    throw AgentError(AgentError::Kind::Usage,
                     AString("the group \"%1\" (socket_group) is not known: %2")
                         .Arg(name, error != 0 ? std::strerror(error) : "make it with groupadd"));
  }
  return found->gr_gid;
}

}  // namespace

ControlSocket::ControlSocket(const AString& path, const AString& group) : m_Path(path) {
  if (!group.IsEmpty()) {
    m_Group = FindGroup(group);
  }
  if (m_Path.ToUtf8().size() >= sizeof(sockaddr_un::sun_path)) {
    throw AgentError(AgentError::Kind::Usage,
                     AString("the path of the control socket is too long: %1; choose a shorter "
                             "directory with --runtime-dir")
                         .Arg(m_Path));
  }
  m_Fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (m_Fd < 0) {
    Fail("make", errno);
  }
  try {
    Bind();
  } catch (const AgentError&) {
    (void)::close(m_Fd);
    throw;
  }
}

ControlSocket::~ControlSocket() {
  (void)::unlink(m_Path.ToUtf8().c_str());
  (void)::close(m_Fd);
}

void ControlSocket::Bind() {
  const std::string path = m_Path.ToUtf8();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  (void)::unlink(path.c_str());
  // The mode that the socket is born with, less the umask: nobody gets in before it is final.
  if (::fchmod(m_Fd, Mode) != 0 ||
      ::bind(m_Fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    Fail("make", errno);
  }
  if (m_Group.has_value() && ::chown(path.c_str(), static_cast<uid_t>(-1), *m_Group) != 0) {
    Fail("hand over to its group", errno);
  }
  if (::chmod(path.c_str(), Mode) != 0) {
    Fail("open to its group", errno);
  }
  if (::listen(m_Fd, Backlog) != 0) {
    Fail("listen on", errno);
  }
}

void ControlSocket::Fail(const char* what, int error) const {
  throw AgentError(
      AgentError::Kind::Failure,
      AString("cannot %1 the control socket %2: %3").Arg(what, m_Path, std::strerror(error)));
}

}  // namespace NoxAgent
