#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <compare>
#include <vector>

namespace NoxAgent {

/// A start that is to come, with its repetitions. Moments in seconds since the epoch.
struct TriggerRun {
  long m_First = 0;
  long m_Step = 0;  ///< 0: no repetition
  long m_Last = 0;
  long m_Stop = NoTime;  ///< when a run is ended

  auto operator<=>(const TriggerRun&) const = default;
};

/// All starts of a dated trigger after `now`, up to the calendar's end, in their order; what is
/// left of a period under way comes first. Intervals and durations are not negative.
std::vector<TriggerRun> TriggerRunsAfter(long now, const TriggerRule& rule,
                                         const LocalCalendar& calendar);

}  // namespace NoxAgent
