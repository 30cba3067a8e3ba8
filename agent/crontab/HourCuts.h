#pragma once

#include "agent/schedule/LocalCalendar.h"

namespace NoxAgent {

/// The hours of the day into which no repetition may go from the hour before, as a mask whose bit 0
/// is the hour after midnight: those at which the clocks are set at any time from `from` on, to the
/// end of the calendar. Repetitions count time that has elapsed, so one that leads over such a
/// change is off for the rest of the day. 0 where the clocks are never set.
///
///     New York: 02:00 becomes 03:00 in spring and 01:00 in autumn, so 2 and 3 are cut
long FindHourCuts(const LocalCalendar& calendar, long from);

}  // namespace NoxAgent
