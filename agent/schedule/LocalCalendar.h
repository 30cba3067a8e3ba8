#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace NoxAgent {

/// The days and the clock changes of the process's time zone (TZ), from some moment to the end of
/// 32-bit time, in tables: a question costs some nanoseconds, where the C library needs
/// microseconds.
///
/// Days are local ones and are counted from 1970-01-01, which is day 0. Moments are seconds since
/// the epoch. The zone is read once, when the object is made; after that it is constant, for any
/// thread. Before the first moment the offset of that moment is taken to hold.
class LocalCalendar {
 public:
  static constexpr long SecondsPerDay = 86400;

  struct Date {
    std::int16_t m_Year;
    std::int8_t m_Month;    ///< from 0
    std::int8_t m_Day;      ///< from 1
    std::int8_t m_Weekday;  ///< from 0, Sunday
    std::int8_t m_DaysInMonth;
  };

  /// Where the clocks are set: they show UTC and m_Before until then, UTC and m_After from then on.
  struct Change {
    long m_Moment;
    long m_Before;
    long m_After;
  };

  /// Asks the C library for the zone: some thousand questions, a few milliseconds.
  explicit LocalCalendar(long from);

  /// The last moment of which questions may be asked; those about days end a few days later.
  static constexpr long End() { return 2147483647L - 7 * SecondsPerDay; }

  /// In seconds east of UTC.
  long OffsetAt(long moment) const;
  long DayOf(long moment) const;
  /// What the clock shows then, in seconds since midnight.
  long ClockAt(long moment) const;
  Date DateOf(long day) const;

  /// The moment at which the clock shows `clock` seconds after midnight on that day: of two the
  /// first; where the clocks leave it out, as far behind the change as it claims to lie.
  long MomentOf(long day, long clock) const;
  /// False for a day that the zone has left out as a whole.
  bool HasDay(long day) const;

  /// The first change after `moment`; null when there is none.
  const Change* ChangeAfter(long moment) const;
  /// The clock shows for the second time what it showed before it was set back.
  bool IsShownAgain(long moment) const;

 private:
  /// How many changes there have been at the beginning of the UTC day.
  std::size_t ChangesBeforeUtcDay(long utcDay) const;
  void FindChanges(long from, long to);

  long m_FirstDay;
  long m_FirstOffset;
  std::vector<Change> m_Changes;
  std::vector<std::uint16_t> m_ChangesBefore;  ///< for each UTC day from m_FirstDay on
  std::vector<Date> m_Dates;                   ///< for each local day from m_FirstDay on
};

}  // namespace NoxAgent
