#include "agent/phrase/LostRuns.h"

#include "agent/phrase/PhraseRule.h"
#include "agent/phrase/PhraseUnits.h"
#include "agent/phrase/PhraseValues.h"
#include "agent/schedule/ScheduleComparison.h"
#include "agent/schedule/SchedulerTrigger.h"

#include <algorithm>

namespace NoxAgent {

namespace {

bool LosesRuns(const TriggerRule& rule, const LocalCalendar& calendar, long now) {
  using Kind = ScheduleDifference::Kind;
  const auto differences = CompareSchedule(SchedulerTrigger(rule, calendar), calendar, now);
  return std::any_of(differences.begin(), differences.end(), [](const auto& each) {
    return each.m_Kind == Kind::LateStart || each.m_Kind == Kind::LostRepetition ||
           each.m_Kind == Kind::LostPastMidnight;
  });
}

}  // namespace

void RefuseLostRuns(const TriggerRule& trigger, const LocalCalendar& calendar, long now) {
  const bool hasPeriod = trigger.m_DurationSeconds > 0 && trigger.m_Type != TriggerRule::Once;
  if (!hasPeriod || !LosesRuns(trigger, calendar, now)) {
    return;
  }
  TriggerRule shorter = trigger;
  do {
    shorter.m_DurationSeconds -=
        std::max(MinuteSeconds, trigger.m_IntervalSeconds / MinuteSeconds * MinuteSeconds);
  } while (shorter.m_DurationSeconds > 0 && LosesRuns(shorter, calendar, now));
  const std::string repeated =
      trigger.Repeats() ? "every " + LengthWords(trigger.m_IntervalSeconds) + " " : "";
  throw PhraseError(repeated + "for " + LengthWords(trigger.m_DurationSeconds) +
                    " reaches too near to the next start, or into a day without one, and the "
                    "scheduler would lose or delay runs" +
                    (shorter.m_DurationSeconds > 0
                         ? "; it can do it for " + LengthWords(shorter.m_DurationSeconds)
                         : ""));
}

}  // namespace NoxAgent
