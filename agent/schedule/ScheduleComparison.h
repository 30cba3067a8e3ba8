#pragma once

#include "agent/schedule/SchedulerTrigger.h"

#include <vector>

namespace NoxAgent {

/// The first time that a trigger runs otherwise than the words of its rule say, in one way of
/// several.
struct ScheduleDifference {
  enum class Kind {
    SkippedTime,      ///< the day lacks the time of day; the start comes at m_Moment instead
    NoSuchStart,      ///< the words have a start at m_Moment, the scheduler's arithmetic has none
    ForeignStart,     ///< the scheduler's arithmetic has a start at m_Moment, the words have none
    PassedOver,       ///< the start at m_Moment is lost: its day is shorter than a step of 24 hours
    LateStart,        ///< the period before it reaches so near to the start that it may come late
    LostRepetition,   ///< one period reaches to the next; repetitions are lost from m_Moment on
    LostPastMidnight  ///< the repetitions from m_Moment on lie on a day that the rule leaves out
  };
  Kind m_Kind = Kind::SkippedTime;
  long m_Day = 0;  ///< the local day of the start
  long m_Moment = 0;
  long m_Gap = 0;  ///< of LateStart and LostRepetition: seconds from one start to the next
};

/// The differences within two years from `from`, or from the begin date when that is later; of each
/// kind the first. This assumes an agent that never stops, that the task has run before, that it
/// has no other trigger, and that the scheduler may read the task files at the worst moment of any
/// hour. The trigger is dated, and its interval and duration are not negative.
///
/// Days like those before are skipped, so this costs some ten microseconds.
std::vector<ScheduleDifference> CompareSchedule(const SchedulerTrigger& trigger,
                                                const LocalCalendar& calendar, long from);

}  // namespace NoxAgent
