#include "agent/handler/system/WakeHandle.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace NoxHandler {

WakeHandle::WakeHandle() : m_Fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!m_Fd) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

void WakeHandle::Set() const {
  (void)eventfd_write(m_Fd.Get(), 1);  // fails only when the flag is set 2^64 times
}

void WakeHandle::Clear() const {
  eventfd_t count = 0;
  (void)eventfd_read(m_Fd.Get(), &count);  // fails only when the flag is not set
}

bool WakeHandle::Wait(int milliseconds) const {
  using Steady = std::chrono::steady_clock;
  const auto deadline = Steady::now() + std::chrono::milliseconds(milliseconds);
  pollfd handle{m_Fd.Get(), POLLIN, 0};
  int ready = -1;
  do {
    const auto rest =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Steady::now()).count();
    ready = poll(&handle, 1, rest > 0 ? static_cast<int>(rest) : 0);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

}  // namespace NoxHandler
