#pragma once

#include <atomic>
#include <ctime>
#include <vector>

namespace BaseSDK {

/// Stands between the library and the calls of the C library that a wait makes, in this test
/// program only: records the deadlines that timers get and plays what the machine does seldom.
/// Without settings everything happens for real.
struct SystemClockDouble {
  SystemClockDouble();
  ~SystemClockDouble();
  SystemClockDouble(const SystemClockDouble&) = delete;
  SystemClockDouble& operator=(const SystemClockDouble&) = delete;

  struct Timer {
    int m_Flags;
    std::time_t m_Seconds;
    long m_Nanoseconds;
  };

  /// Settings of timers, in order.
  std::vector<Timer> m_Timers;
  /// The number of a setting, from 0, before which the wall clock is set; -1 for none.
  int m_ClockSetBefore = -1;
  /// No descriptor for timers is to be had.
  bool m_NoTimers = false;
  /// Nor one for events.
  bool m_NoEvents = false;
  /// For so many of its next calls time() stands still, in the second before the real one as the
  /// first of them finds it.
  std::atomic<int> m_LateCalls{0};
  /// What those return, and the last of them returned; 0 before the first.
  std::atomic<std::time_t> m_LateTime{0};
  /// What time() returned last.
  std::atomic<std::time_t> m_LastTime{0};
};

}  // namespace BaseSDK
