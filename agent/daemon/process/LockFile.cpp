#include "agent/daemon/process/LockFile.h"

#include "agent/daemon/AgentError.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr int Attempts = 1500;
constexpr int PauseMilliseconds = 20;

// 0 when the file does not say.
pid_t Owner(int fd) {
  char text[32];
  const ssize_t length = ::pread(fd, text, sizeof(text), 0);
  return length > 0 ? static_cast<pid_t>(
                          AString::FromUtf8({text, static_cast<std::size_t>(length)}).ToLong())
                    : 0;
}

AString OwnerText(int fd) {
  const pid_t owner = Owner(fd);
  return owner > 0 ? AString(" (process %1)").Arg(AString().SetNum(owner, 'd')) : AString();
}

bool IsGone(pid_t process) {
  return process > 0 && ::kill(process, 0) != 0 && errno == ESRCH;
}

// When an agent is killed while it starts a command, the new process has a copy of the lock until
// it closes its copies of the agent's descriptors. So the lock of an agent that is gone is waited
// for.
bool Lock(int fd) {
  for (int attempt = 0; attempt < Attempts; ++attempt) {
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
      return true;
    }
    if (!IsGone(Owner(fd))) {
      return false;
    }
    (void)::poll(nullptr, 0, PauseMilliseconds);
  }
  return false;
}

}  // namespace

LockFile::LockFile(const AString& directory) {
  const AString path = directory + "/noxagentd.lock";
  m_Fd = ::open(path.ToUtf8().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0640);
  if (m_Fd < 0) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("cannot open the lock file %1: %2").Arg(path, std::strerror(errno)));
  }
  if (!Lock(m_Fd)) {
    const AString owner = OwnerText(m_Fd);
    (void)::close(m_Fd);
    throw AgentError(
        AgentError::Kind::AlreadyRunning,
        AString("another noxagentd%1 uses %2: stop it, or choose directories of your own with "
                "--state-dir and --runtime-dir")
            .Arg(owner, directory));
  }
  // For people and for the message above; the lock does not depend on it.
  const std::string process = std::to_string(::getpid()) + "\n";
  (void)!::ftruncate(m_Fd, 0);
  (void)!::pwrite(m_Fd, process.data(), process.size(), 0);
}

LockFile::~LockFile() {
  (void)::close(m_Fd);
}

}  // namespace NoxAgent
