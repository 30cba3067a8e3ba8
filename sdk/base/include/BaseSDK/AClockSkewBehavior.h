#pragma once

namespace BaseSDK {

/// How a wait deals with the wall clock; values combine by `|`.
enum AClockSkewBehavior : unsigned {
  /// The wait lasts for its time; steps of the wall clock do not matter.
  ClockSkewIgnore = 0,
  /// The wait ends when the wall clock is set.
  ClockSkewEndOnSet = 1,
  /// The wait ends when the machine resumes from sleep. The system reports both events in the same
  /// way, so asking for one of them is asking for both.
  ClockSkewEndOnResume = 2,
  /// A wait of whole seconds ends at a second boundary of the wall clock: when time() has moved on
  /// by that many seconds, and not up to a second later.
  ClockSkewAlignToSecond = 4,
  /// A wait that ran its time does not return before time() shows the second it waited for. The
  /// clock of time() may lag the fine clock by a tick.
  ClockSkewNeverEarly = 8,
};

constexpr AClockSkewBehavior operator|(AClockSkewBehavior left, AClockSkewBehavior right) {
  return static_cast<AClockSkewBehavior>(static_cast<unsigned>(left) |
                                         static_cast<unsigned>(right));
}

}  // namespace BaseSDK
