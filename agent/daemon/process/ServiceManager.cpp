#include "agent/daemon/process/ServiceManager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

std::optional<unsigned long> ReadInterval(const Environment& environment) {
  const AString process = environment.m_Variable("WATCHDOG_PID");
  const long microseconds = environment.m_Variable("WATCHDOG_USEC").ToLong();
  const bool forUs = process.IsEmpty() || process.ToLong() == static_cast<long>(::getpid());
  if (!forUs || microseconds <= 0) {
    return std::nullopt;
  }
  return std::max(1UL, static_cast<unsigned long>(microseconds) / 2000);
}

// A file system path, or "@name" for the abstract name space; anything else is not for us.
bool IsAddress(const std::string& address) {
  return address.size() > 1 && address.size() < sizeof(sockaddr_un::sun_path) &&
         (address[0] == '/' || address[0] == '@');
}

}  // namespace

ServiceManager::ServiceManager(const Environment& environment)
    : m_Address(environment.m_Variable("NOTIFY_SOCKET").ToUtf8()),
      m_KeepAliveInterval(ReadInterval(environment)) {
  if (IsAddress(m_Address)) {
    m_Fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  }
}

ServiceManager::~ServiceManager() {
  if (m_Fd >= 0) {
    (void)::close(m_Fd);
  }
}

void ServiceManager::Ready() const {
  Send("READY=1\nSTATUS=Serving the control socket\n");
}

void ServiceManager::Reloading() const {
  timespec now{};
  (void)::clock_gettime(CLOCK_MONOTONIC, &now);
  const std::int64_t microseconds =
      static_cast<std::int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
  Send("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(microseconds) + "\n");
}

void ServiceManager::Stopping() const {
  Send("STOPPING=1\nSTATUS=Unloading plug-ins\n");
}

// Never waits. When the queue of the socket is full, the service manager finds enough signs of life
// in it.
void ServiceManager::KeepAlive() const {
  Send("WATCHDOG=1\n", MSG_DONTWAIT);
}

void ServiceManager::Send(const std::string& message, int flags) const {
  if (m_Fd < 0) {
    return;
  }
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, m_Address.data(), m_Address.size());
  if (m_Address[0] == '@') {
    address.sun_path[0] = '\0';
  }
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + m_Address.size());
  // When the service manager is gone there is nobody to tell; the agent works on.
  (void)::sendto(m_Fd, message.data(), message.size(), MSG_NOSIGNAL | flags,
                 reinterpret_cast<const sockaddr*>(&address), size);
}

}  // namespace NoxAgent
