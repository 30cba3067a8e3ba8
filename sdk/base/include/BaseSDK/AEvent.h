#pragma once

#include <BaseSDK/AClockSkewBehavior.h>

#include <memory>

namespace BaseSDK {

/// An event that threads wait for and others set. All operations may be called from any thread; no
/// thread may use the event while it is destroyed.
class AEvent {
 public:
  static constexpr int AutoReset = 0;    ///< one wait consumes the set event
  static constexpr int ManualReset = 1;  ///< the event stays set until Reset

  // What Wait returns.
  static constexpr int TimedOut = 0;  ///< the time was over
  static constexpr int WasSet = 1;
  static constexpr int ClockChanged = 2;  ///< the wall clock was set or the machine resumed

  /// Starts not set. Throws std::system_error when the system has no descriptors left.
  explicit AEvent(int resetMode);
  AEvent(const AEvent&) = delete;
  AEvent& operator=(const AEvent&) = delete;
  ~AEvent();

  /// Setting a set event changes nothing. Returns 1.
  int Set();
  /// Returns 1 when the event was set, else 0.
  int Reset();
  /// Waits until the event is set, at most `milliseconds`; 0 looks and returns at once. A set event
  /// wins over a deadline that has passed. A wait that watches the wall clock also has the C
  /// library look for a changed time zone before it returns (ASystemZone). Returns one of the
  /// values above.
  int Wait(unsigned long milliseconds, AClockSkewBehavior behavior);

 private:
  struct Impl;
  std::unique_ptr<Impl> m_Impl;
};

}  // namespace BaseSDK
