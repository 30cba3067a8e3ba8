#pragma once

#include <vector>

/// Next runs by the plainest code that finds them, to compare with what the scheduler needs: a
/// table of the zone's offsets and civil arithmetic. It keeps no answers.
///
/// Moments are seconds since the epoch, days are counted from 1970-01-01.
namespace PlainCalendar {

/// The offsets of the C library's zone in the years 2000 to 2037.
class OffsetTable {
 public:
  OffsetTable();

  long OffsetAt(long moment) const;
  /// The moment at which the clock shows this, on a day and at a time of day that it does show.
  long MomentOf(long day, long second) const;

 private:
  struct Span {
    long m_Begin;
    long m_Offset;
  };
  std::vector<Span> m_Spans;
};

struct Rule {
  /// The first weekday is in the scheduler's first week, which ends with the 6th.
  enum Kind { OnDaysOfWeek, OnDayOfMonth, OnFirstWeekday };
  Kind m_Kind;
  unsigned m_Days;  ///< bits of the days of the week, 0 is Sunday; or the number of the one day
  unsigned m_MonthsOfYear = 0xFFF;  ///< bit 0 is January
};

constexpr long Never = -1;

/// The first moment at or after `from`, within twenty years, at which the clock shows `second` on a
/// day of the rule; or Never.
long NextRun(const OffsetTable& offsets, const Rule& rule, long second, long from);

}  // namespace PlainCalendar
