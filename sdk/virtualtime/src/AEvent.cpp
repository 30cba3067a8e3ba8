// BaseSDK::AEvent again, on virtual time; found first because it is the executable's own.
#include "Timeline.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AThreadRest.h>

#include <algorithm>
#include <deque>
#include <utility>

namespace BaseSDK {

using VirtualTime::ParkedWait;
using VirtualTime::Timeline;

struct AEvent::Impl {
  explicit Impl(int resetMode) : m_AutoReset(resetMode == AutoReset) {}

  bool Take() {
    const bool wasSet = m_IsSet;
    m_IsSet = wasSet && !m_AutoReset;
    return wasSet;
  }

  /// Wakes the first waiting thread, at the moment of the call: it counts as awake from here on, so
  /// that the clock cannot run away before the system lets it run.
  bool WakeOne() {
    const auto first = std::find_if(m_Waits.begin(), m_Waits.end(), [](const ParkedWait* wait) {
      return wait->m_State == ParkedWait::Parked;
    });
    if (first == m_Waits.end()) {
      return false;
    }
    Timeline::Instance().Release(**first, WasSet);
    return true;
  }

  int Park(Timeline::Lock& lock, unsigned long milliseconds, AClockSkewBehavior behavior) {
    const AThreadRest rest;
    Timeline& timeline = Timeline::Instance();
    const auto clock = behavior == ClockSkewIgnore ? Timeline::Steady : Timeline::Wall;
    ParkedWait wait;
    wait.m_EndsOnClockChange = (behavior & (ClockSkewEndOnSet | ClockSkewEndOnResume)) != 0;
    m_Waits.push_back(&wait);
    const int result = timeline.Park(lock, wait, clock, Deadline(clock, milliseconds, behavior));
    std::erase(m_Waits, &wait);
    return result != WasSet && Take() ? WasSet : result;
  }

  static std::int64_t Deadline(Timeline::Clock clock, unsigned long milliseconds,
                               AClockSkewBehavior behavior) {
    const std::int64_t now = Timeline::Instance().Read(clock);
    const bool aligns = (behavior & ClockSkewAlignToSecond) != 0 && milliseconds % 1000 == 0;
    const std::int64_t intoSecond = ((now % 1000) + 1000) % 1000;
    return (aligns ? now - intoSecond : now) + static_cast<std::int64_t>(milliseconds);
  }

  const bool m_AutoReset;
  bool m_IsSet = false;               ///< all under the timeline's lock
  std::deque<ParkedWait*> m_Waits{};  ///< in the order in which they began
};

AEvent::AEvent(int resetMode) : m_Impl(std::make_unique<Impl>(resetMode)) {}

AEvent::~AEvent() = default;

int AEvent::Set() {
  const Timeline::Lock lock = Timeline::Instance().Acquire();
  if (m_Impl->m_AutoReset) {
    m_Impl->m_IsSet = !m_Impl->WakeOne();
  } else {
    while (m_Impl->WakeOne()) {
    }
    m_Impl->m_IsSet = true;
  }
  return 1;
}

int AEvent::Reset() {
  const Timeline::Lock lock = Timeline::Instance().Acquire();
  return std::exchange(m_Impl->m_IsSet, false) ? 1 : 0;
}

int AEvent::Wait(unsigned long milliseconds, AClockSkewBehavior behavior) {
  Timeline::Lock lock = Timeline::Instance().Acquire();
  if (m_Impl->Take()) {
    return WasSet;
  }
  if (milliseconds > 0) {
    return m_Impl->Park(lock, milliseconds, behavior);
  }
  if (!Timeline::IsOwnThread()) {
    return TimedOut;
  }
  // A loop of empty waits takes time on a real machine too. Here it takes a millisecond a turn, or
  // it would never park and hold the clock for good.
  return m_Impl->Park(lock, 1, ClockSkewIgnore);
}

}  // namespace BaseSDK
