#include <BaseSDK/AEvent.h>
#include <BaseSDK/ASystemZone.h>
#include <BaseSDK/AThreadRest.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <system_error>

// Nothing but AEvent belongs into this file: a library that owns time defines the same members, and
// takes the place of this file as a whole.
namespace BaseSDK {

namespace {

constexpr long NanosecondsPerSecond = 1000000000;
constexpr long NanosecondsPerMillisecond = 1000000;

/// 64 bits at both word sizes, so that sums of seconds and waits cannot overflow.
struct Moment {
  std::int64_t m_Seconds;
  long m_Nanoseconds;
};

bool IsBefore(const Moment& left, const Moment& right) {
  return left.m_Seconds != right.m_Seconds ? left.m_Seconds < right.m_Seconds
                                           : left.m_Nanoseconds < right.m_Nanoseconds;
}

Moment Read(clockid_t clock) {
  timespec now{};
  (void)clock_gettime(clock, &now);  // fails only for clocks that do not exist
  return {now.tv_sec, now.tv_nsec};
}

Moment Later(Moment moment, unsigned long milliseconds) {
  moment.m_Seconds += static_cast<std::int64_t>(milliseconds / 1000);
  moment.m_Nanoseconds += static_cast<long>(milliseconds % 1000) * NanosecondsPerMillisecond;
  if (moment.m_Nanoseconds >= NanosecondsPerSecond) {
    moment.m_Nanoseconds -= NanosecondsPerSecond;
    ++moment.m_Seconds;
  }
  return moment;
}

/// For poll: rounded up, so as not to spin through the last millisecond; never above `most`.
int MillisecondsUntil(const Moment& deadline, clockid_t clock, int most) {
  const Moment now = Read(clock);
  const std::int64_t seconds = deadline.m_Seconds - now.m_Seconds;
  if (seconds > most / 1000) {
    return most;
  }
  const std::int64_t left = seconds * 1000 + (deadline.m_Nanoseconds - now.m_Nanoseconds +
                                              NanosecondsPerMillisecond - 1) /
                                                 NanosecondsPerMillisecond;
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, most));
}

/// A timer on the wall clock that also notices when that clock is set or the machine resumes; the
/// system tells both in the same way. Without a descriptor to be had it only knows its deadline.
class WallTimer {
 public:
  enum State { Pending, Expired, ClockSet };

  explicit WallTimer(bool watchesClock)
      : m_Flags(TFD_TIMER_ABSTIME | (watchesClock ? TFD_TIMER_CANCEL_ON_SET : 0)),
        m_Fd(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
    // Armed before the caller reads the clock, so that no step of it goes by unnoticed in between.
    (void)Settle(LastSecond());
  }
  WallTimer(const WallTimer&) = delete;
  WallTimer& operator=(const WallTimer&) = delete;
  ~WallTimer() {
    if (m_Fd >= 0) {
      (void)close(m_Fd);
    }
  }

  /// False when the clock was set since construction.
  bool Arm(const Moment& deadline) {
    m_Deadline = deadline;
    return Settle(std::min(deadline.m_Seconds, LastSecond()));
  }

  State Look() const {
    std::uint64_t expirations = 0;
    if (m_Fd < 0) {
      return IsBefore(Read(CLOCK_REALTIME), m_Deadline) ? Pending : Expired;
    }
    if (read(m_Fd, &expirations, sizeof expirations) > 0) {
      return Expired;
    }
    return errno == ECANCELED ? ClockSet : Pending;
  }

  int Descriptor() const { return m_Fd; }

  /// How long a poll may last: without a descriptor it has to come back and look.
  int PollMilliseconds() const {
    constexpr int LookAgain = 1000;
    return m_Fd >= 0 ? -1 : MillisecondsUntil(m_Deadline, CLOCK_REALTIME, LookAgain);
  }

 private:
  /// A deadline past the end of time_t becomes its last second.
  static std::int64_t LastSecond() { return sizeof(std::time_t) == 4 ? INT32_MAX : INT64_MAX / 4; }

  bool Settle(std::int64_t seconds) {
    itimerspec timer{};
    timer.it_value.tv_sec = static_cast<std::time_t>(seconds);
    timer.it_value.tv_nsec = m_Deadline.m_Nanoseconds;
    return m_Fd < 0 || timerfd_settime(m_Fd, m_Flags, &timer, nullptr) == 0 || errno != ECANCELED;
  }

  const int m_Flags;
  const int m_Fd;
  Moment m_Deadline{0, 0};
};

}  // namespace

struct AEvent::Impl {
  explicit Impl(int resetMode)
      : m_AutoReset(resetMode == AutoReset), m_Fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_Fd < 0) {
      throw std::system_error(errno, std::generic_category(), "eventfd");
    }
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { (void)close(m_Fd); }

  bool Consume() {
    std::uint64_t count = 0;
    return read(m_Fd, &count, sizeof count) > 0;
  }

  /// True when the event is set, for one caller only if it resets itself.
  bool Take() {
    pollfd waiting{m_Fd, POLLIN, 0};
    return m_AutoReset ? Consume() : poll(&waiting, 1, 0) > 0;
  }

  /// Returns when one of the two may be ready, the time is over (-1: never) or a signal came.
  void Poll(int otherFd, int milliseconds) {
    std::array<pollfd, 2> waiting{{{m_Fd, POLLIN, 0}, {otherFd, POLLIN, 0}}};
    (void)poll(waiting.data(), waiting.size(), milliseconds);
  }

  int Wait(unsigned long milliseconds, AClockSkewBehavior behavior) {
    if (Take()) {
      return WasSet;
    }
    if (milliseconds == 0) {
      return TimedOut;
    }
    const AThreadRest rest;
    return behavior == ClockSkewIgnore ? WaitFor(milliseconds)
                                       : WaitByWallClock(milliseconds, behavior);
  }

  int WaitFor(unsigned long milliseconds) {
    const Moment deadline = Later(Read(CLOCK_MONOTONIC), milliseconds);
    for (;;) {
      const int left = MillisecondsUntil(deadline, CLOCK_MONOTONIC, INT_MAX);
      Poll(-1, left);
      if (Take()) {
        return WasSet;
      }
      if (left == 0) {
        return TimedOut;
      }
    }
  }

  int WaitByWallClock(unsigned long milliseconds, unsigned behavior) {
    WallTimer timer((behavior & (ClockSkewEndOnSet | ClockSkewEndOnResume)) != 0);
    const Moment deadline = WallDeadline(milliseconds, behavior);
    WallTimer::State state = timer.Arm(deadline) ? WallTimer::Pending : WallTimer::ClockSet;
    while (state == WallTimer::Pending) {
      Poll(timer.Descriptor(), timer.PollMilliseconds());
      if (Take()) {
        return WasSet;
      }
      state = timer.Look();
    }
    if (state == WallTimer::ClockSet) {
      return ClockChanged;
    }
    return (behavior & ClockSkewNeverEarly) != 0 ? WaitForTick(deadline) : TimedOut;
  }

  static Moment WallDeadline(unsigned long milliseconds, unsigned behavior) {
    if ((behavior & ClockSkewAlignToSecond) != 0 && milliseconds % 1000 == 0) {
      // Counts from the second that time() shows, as callers do. The fine clock may be in the next
      // one already.
      return {std::int64_t{::time(nullptr)} + static_cast<std::int64_t>(milliseconds / 1000), 0};
    }
    return Later(Read(CLOCK_REALTIME), milliseconds);
  }

  /// The deadline has passed on the fine clock; time() follows with the next tick of the machine.
  int WaitForTick(const Moment& deadline) {
    constexpr int Pause = 1;  // millisecond; a tick is 1 to 10
    while (::time(nullptr) < deadline.m_Seconds && !IsBefore(Read(CLOCK_REALTIME), deadline)) {
      Poll(-1, Pause);
      if (Take()) {
        return WasSet;
      }
    }
    return TimedOut;
  }

  const bool m_AutoReset;
  const int m_Fd;
};

AEvent::AEvent(int resetMode) : m_Impl(std::make_unique<Impl>(resetMode)) {}

AEvent::~AEvent() = default;

int AEvent::Set() {
  const std::uint64_t one = 1;
  // Fails only when the counter is full, and then the event is set.
  (void)!write(m_Impl->m_Fd, &one, sizeof one);
  return 1;
}

int AEvent::Reset() {
  return m_Impl->Consume() ? 1 : 0;
}

int AEvent::Wait(unsigned long milliseconds, AClockSkewBehavior behavior) {
  const int result = m_Impl->Wait(milliseconds, behavior);
  if (behavior != ClockSkewIgnore) {
    ASystemZone::Refresh();  // who goes by the wall clock reckons in local time next
  }
  return result;
}

}  // namespace BaseSDK
