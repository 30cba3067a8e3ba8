#pragma once

namespace NoxAgent {

/// There is no such time, or never.
constexpr long NoTime = -1;

/// The numbers of one trigger, as the scheduler reads them from a document.
///
/// Times are seconds since the epoch in the signed 32-bit range, NoTime when absent or unreadable.
struct TriggerRule {
  static constexpr long AsSoonAsPossible = -1;
  static constexpr long Once = 0;
  static constexpr long Daily = 1;
  static constexpr long Weekly = 2;
  static constexpr long MonthlyByDate = 3;
  static constexpr long MonthlyByWeekday = 4;  ///< greater types never fire

  static constexpr long LastWeek = 5;

  long m_Type = Once;
  long m_IntervalSeconds = 0;
  long m_DurationSeconds = 0;
  long m_Begin = NoTime;
  long m_End = NoTime;  ///< one before m_Begin means m_Begin
  long m_DaysInterval = 1;
  long m_WeeksInterval = 1;
  long m_DaysOfWeek = 0;     ///< bit 0 is Sunday
  long m_DaysOfMonth = 0;    ///< bit 0 is the 1st
  long m_MonthsOfYear = 0;   ///< bit 0 is January
  long m_Week = 1;           ///< 1 to LastWeek
  bool m_KillAtEnd = false;  ///< of no meaning to when it starts

  bool operator==(const TriggerRule&) const = default;

  bool Repeats() const { return m_IntervalSeconds != 0 && m_DurationSeconds != 0; }
};

/// Whether the mask has this bit.
constexpr bool HasBit(long mask, int bit) {
  return ((mask >> bit) & 1) != 0;
}

}  // namespace NoxAgent
