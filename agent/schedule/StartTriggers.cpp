#include "agent/schedule/StartTriggers.h"

#include "agent/schedule/RestOfPeriod.h"
#include "agent/schedule/SchedulerTrigger.h"

namespace NoxAgent {

namespace {

std::vector<TriggerRule> RestOfDay(const StartRule& rule, const LocalCalendar& calendar,
                                   long from) {
  const long day = calendar.DayOf(from);
  const long start = calendar.MomentOf(day, rule.m_Clock);
  const bool isUnderWay = rule.m_Rule.Repeats() && start < from &&
                          SchedulerTrigger::MasksSelect(rule.m_Rule, calendar.DateOf(day));
  return isUnderWay ? RestOfPeriod(rule.m_Rule, start, from) : std::vector<TriggerRule>();
}

}  // namespace

std::vector<TriggerRule> StartTriggers(const std::vector<StartRule>& rules,
                                       const LocalCalendar& calendar, long from) {
  std::vector<TriggerRule> triggers;
  for (const StartRule& rule : rules) {
    const auto rest = RestOfDay(rule, calendar, from);
    triggers.insert(triggers.end(), rest.begin(), rest.end());
    for (const long start : MovedStartsBeforeBegin(rule, calendar, from)) {
      TriggerRule moved;
      moved.m_Begin = start;
      moved.m_End = rule.m_Rule.m_End;
      moved.m_IntervalSeconds = rule.m_Rule.m_IntervalSeconds;
      moved.m_DurationSeconds = rule.m_Rule.m_DurationSeconds;
      triggers.push_back(moved);
    }
    if (const auto trigger = BeginAtFirstStart(rule, calendar, from)) {
      triggers.push_back(*trigger);
    }
  }
  return triggers;
}

}  // namespace NoxAgent
