#include "agent/handler/system/WallTimer.h"

#include <sys/timerfd.h>

#include <cerrno>
#include <system_error>

namespace NoxHandler {

WallTimer::WallTimer() : m_Fd(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
  if (!m_Fd) {
    throw std::system_error(errno, std::generic_category(), "timerfd_create");
  }
}

void WallTimer::Set(std::optional<long> moment) {
  itimerspec when{};
  when.it_value.tv_sec = moment.value_or(0);
  (void)timerfd_settime(m_Fd.Get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &when, nullptr);
}

}  // namespace NoxHandler
