#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace NoxAgent {

/// The days and the clock changes of the process's time zone (TZ), from a given moment to the end
/// of 32-bit time. They are kept in tables, so a question costs some nanoseconds where the C
/// library needs microseconds.
///
/// Days are local ones and are counted from 1970-01-01, which is day 0. Moments are seconds since
/// the epoch. The zone is read once, when the object is made; after that the object is constant,
/// and any thread may ask. Before the first moment the offset of that moment is taken to hold.
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

  /// A moment at which the clocks are set. Until then they show UTC plus m_Before, from then on UTC
  /// plus m_After, both in seconds.
  struct Change {
    long m_Moment;
    long m_Before;
    long m_After;
  };

  /// Asks the C library some thousand times, which takes a few milliseconds. `from` is the first
  /// moment of interest.
  explicit LocalCalendar(long from);

  /// The last moment that may be asked about. The tables of days reach a few days further.
  static constexpr long End() { return 2147483647L - 7 * SecondsPerDay; }

  /// How far the clocks are ahead of UTC at that moment, in seconds; negative west of it.
  long OffsetAt(long moment) const;
  /// The local day of the moment.
  long DayOf(long moment) const;
  /// What the clocks show at that moment, in seconds since midnight.
  long ClockAt(long moment) const;
  Date DateOf(long day) const;

  /// The moment at which the clocks show `clock` seconds after midnight on that day; the first of
  /// two. Where a change leaves that time out, the moment lies as far behind the change as the time
  /// does.
  long MomentOf(long day, long clock) const;
  /// Whether the zone has the day at all: a zone that moves across the date line leaves one out.
  bool HasDay(long day) const;

  /// The first change after `moment`; null when there is none.
  const Change* ChangeAfter(long moment) const;
  /// Whether the clocks were set back and show for the second time what they showed before.
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
