#include "agent/schedule/StartTriggers.h"

#include "agent/schedule/SchedulerTrigger.h"

namespace NoxAgent {

namespace {

std::optional<TriggerRule> RestOfDay(const StartRule& rule, const LocalCalendar& calendar,
                                     long from) {
  const long day = calendar.DayOf(from);
  const long start = calendar.MomentOf(day, rule.m_Clock);
  const long interval = rule.m_Rule.m_IntervalSeconds;
  if (!rule.m_Rule.Repeats() || start >= from ||
      !SchedulerTrigger::MasksSelect(rule.m_Rule, calendar.DateOf(day))) {
    return std::nullopt;
  }
  const long steps = (from - start - 1) / interval + 1;
  const long left = rule.m_Rule.m_DurationSeconds - steps * interval;
  if (left < 0) {
    return std::nullopt;
  }
  TriggerRule rest;
  rest.m_Begin = start + steps * interval;
  if (rule.m_Rule.m_End != NoTime && rest.m_Begin > rule.m_Rule.m_End) {
    return std::nullopt;
  }
  rest.m_IntervalSeconds = left >= interval ? interval : 0;
  rest.m_DurationSeconds = left >= interval ? left : 0;
  rest.m_End = rule.m_Rule.m_End;
  return rest;
}

}  // namespace

std::vector<TriggerRule> StartTriggers(const std::vector<StartRule>& rules,
                                       const LocalCalendar& calendar, long from) {
  std::vector<TriggerRule> triggers;
  for (const StartRule& rule : rules) {
    if (const auto rest = RestOfDay(rule, calendar, from)) {
      triggers.push_back(*rest);
    }
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
