#include "agent/schedule/StartRule.h"

#include "agent/schedule/SchedulerTrigger.h"

namespace NoxAgent {

std::optional<TriggerRule> BeginAtFirstStart(const StartRule& rule, const LocalCalendar& calendar,
                                             long from) {
  const long until = rule.m_Rule.m_End == NoTime ? LocalCalendar::End() : rule.m_Rule.m_End;
  for (long day = calendar.DayOf(from); day <= calendar.DayOf(LocalCalendar::End()); ++day) {
    if (!SchedulerTrigger::MasksSelect(rule.m_Rule, calendar.DateOf(day))) {
      continue;
    }
    const long start = calendar.MomentOf(day, rule.m_Clock);
    if (start > until) {
      break;
    }
    if (start >= from && calendar.DayOf(start) == day && calendar.ClockAt(start) == rule.m_Clock) {
      TriggerRule trigger = rule.m_Rule;
      trigger.m_Begin = start;
      return trigger;
    }
  }
  return std::nullopt;
}

std::vector<long> MovedStartsBeforeBegin(const StartRule& rule, const LocalCalendar& calendar,
                                         long from) {
  const auto trigger = BeginAtFirstStart(rule, calendar, from);
  const long end = rule.m_Rule.m_End == NoTime ? LocalCalendar::End() : rule.m_Rule.m_End;
  const long begin = trigger ? trigger->m_Begin : end;
  std::vector<long> starts;
  for (long day = calendar.DayOf(from); day <= calendar.DayOf(begin); ++day) {
    const long start = calendar.MomentOf(day, rule.m_Clock);
    const bool isMoved = calendar.ClockAt(start) != rule.m_Clock || calendar.DayOf(start) != day;
    if (isMoved && start >= from && start < begin &&
        SchedulerTrigger::MasksSelect(rule.m_Rule, calendar.DateOf(day))) {
      starts.push_back(start);
    }
  }
  return starts;
}

}  // namespace NoxAgent
