#include "agent/phrase/DayChoice.h"

#include "agent/schedule/SchedulerTrigger.h"
#include "agent/schedule/WordedRule.h"

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;

TriggerRule TriggerOf(const PhraseRule& rule) {
  TriggerRule trigger;
  switch (rule.m_Days) {
    case Days::EveryDays:
      trigger.m_Type = TriggerRule::Daily;
      trigger.m_DaysInterval = rule.m_Count;
      return trigger;
    case Days::EveryWeeks:
      trigger.m_Type = TriggerRule::Weekly;
      trigger.m_WeeksInterval = rule.m_Count;
      trigger.m_DaysOfWeek = rule.m_Weekdays;
      return trigger;
    case Days::MonthDays:
      trigger.m_Type = TriggerRule::MonthlyByDate;
      trigger.m_DaysOfMonth = rule.m_MonthDays;
      trigger.m_MonthsOfYear = rule.m_Months;
      return trigger;
    default:
      trigger.m_Type = TriggerRule::MonthlyByWeekday;
      trigger.m_DaysOfWeek = rule.m_Weekdays;
      trigger.m_Week = rule.m_Week;
      trigger.m_MonthsOfYear = rule.m_Months;
      return trigger;
  }
}

}  // namespace

DayChoice::DayChoice(const PhraseRule& rule, long firstDay, const LocalCalendar& calendar)
    : m_Rule(rule), m_FirstDay(firstDay), m_Calendar(calendar), m_Trigger(TriggerOf(rule)) {}

bool DayChoice::Selects(long day) const {
  if (IsCounted() || m_Rule.m_Days == Days::Ordinal) {
    return WordedRule(m_Trigger, m_FirstDay, m_Calendar).Selects(day);
  }
  return SchedulerTrigger::MasksSelect(m_Trigger, m_Calendar.DateOf(day));
}

}  // namespace NoxAgent
