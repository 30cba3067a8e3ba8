#include "SystemClockDouble.h"

#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>

namespace {

std::atomic<BaseSDK::SystemClockDouble*> g_Active{nullptr};

}  // namespace

namespace BaseSDK {

SystemClockDouble::SystemClockDouble() {
  g_Active = this;
}

SystemClockDouble::~SystemClockDouble() {
  g_Active = nullptr;
}

}  // namespace BaseSDK

extern "C" {

std::time_t time(std::time_t* result) noexcept {
  timespec now{};
  (void)clock_gettime(CLOCK_REALTIME_COARSE, &now);
  if (BaseSDK::SystemClockDouble* const active = g_Active) {
    if (active->m_LateCalls > 0) {
      // Not the second before the real one at each call: that would go on while a slow machine
      // takes its time between two of them.
      if (active->m_LateTime == 0) {
        active->m_LateTime = now.tv_sec - 1;
      }
      now.tv_sec = active->m_LateTime;
      --active->m_LateCalls;
    }
    active->m_LastTime = now.tv_sec;
  }
  if (result != nullptr) {
    *result = now.tv_sec;
  }
  return now.tv_sec;
}

int timerfd_create(clockid_t clock, int flags) noexcept {
  if (const BaseSDK::SystemClockDouble* const active = g_Active;
      active != nullptr && active->m_NoTimers) {
    errno = EMFILE;
    return -1;
  }
  return static_cast<int>(syscall(SYS_timerfd_create, clock, flags));
}

int eventfd(unsigned count, int flags) noexcept {
  if (const BaseSDK::SystemClockDouble* const active = g_Active;
      active != nullptr && active->m_NoEvents) {
    errno = EMFILE;
    return -1;
  }
  return static_cast<int>(syscall(SYS_eventfd2, count, flags));
}

int timerfd_settime(int fd, int flags, const itimerspec* value, itimerspec* old) noexcept {
  if (BaseSDK::SystemClockDouble* const active = g_Active) {
    const int number = static_cast<int>(active->m_Timers.size());
    active->m_Timers.push_back({flags, value->it_value.tv_sec, value->it_value.tv_nsec});
    if (number == active->m_ClockSetBefore) {
      errno = ECANCELED;
      return -1;
    }
  }
  return static_cast<int>(syscall(SYS_timerfd_settime, fd, flags, value, old));
}
}
