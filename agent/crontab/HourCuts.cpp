#include "agent/crontab/HourCuts.h"

namespace NoxAgent {

namespace {

constexpr long HoursOfADay = 24;

long HourFrom(long clock) {
  constexpr long SecondsPerHour = 3600;
  return (clock + SecondsPerHour - 1) / SecondsPerHour;
}

}  // namespace

long FindHourCuts(const LocalCalendar& calendar, long from) {
  long cuts = 0;
  for (const auto* change = calendar.ChangeAfter(from); change != nullptr;
       change = calendar.ChangeAfter(change->m_Moment)) {
    const long shift = change->m_After - change->m_Before;
    // What the clocks would have shown.
    const long clock = calendar.ClockAt(change->m_Moment - 1) + 1;
    // A start in the hour that is left out comes behind it, and may not reach further than that.
    const long last = HourFrom(shift > 0 ? clock + shift : clock);
    for (long hour = HourFrom(clock); hour <= last; ++hour) {
      cuts |= 1L << hour % HoursOfADay;
    }
  }
  return cuts;
}

}  // namespace NoxAgent
