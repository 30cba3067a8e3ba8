#pragma once

#include <chrono>

namespace NoxHandler {

/// The clock by which the supervisor waits for the beginning of a run. It goes on evenly, whoever
/// sets the machine's clock. Tests put one in its place that moves when they say. [any thread]
class WaitClock {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  WaitClock() = default;
  WaitClock(const WaitClock&) = delete;
  WaitClock& operator=(const WaitClock&) = delete;
  virtual ~WaitClock() = default;

  virtual Moment Now() const { return std::chrono::steady_clock::now(); }
  /// The system's.
  static const WaitClock& Usual();
};

}  // namespace NoxHandler
