#include "agent/phrase/DayChoice.h"

#include "agent/schedule/SchedulerTrigger.h"
#include "agent/schedule/WordedRule.h"

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;

TriggerRule MonthDaysTrigger(long days, long months) {
  TriggerRule trigger;
  trigger.m_Type = TriggerRule::MonthlyByDate;
  trigger.m_DaysOfMonth = days;
  trigger.m_MonthsOfYear = months;
  return trigger;
}

TriggerRule MonthWeekTrigger(const PhraseRule& rule) {
  TriggerRule trigger;
  trigger.m_Type = TriggerRule::MonthlyByWeekday;
  trigger.m_DaysOfWeek = rule.m_Weekdays;
  trigger.m_Week = rule.m_Week;
  trigger.m_MonthsOfYear = rule.m_Months;
  return trigger;
}

TriggerRule TriggerOf(const PhraseRule& rule) {
  TriggerRule trigger;
  const bool hasMonths = rule.m_Months != PhraseRule::AllMonths;
  switch (rule.m_Days) {
    case Days::EveryDays:
      trigger.m_Type = TriggerRule::Daily;
      trigger.m_DaysInterval = rule.m_Count;
      return hasMonths ? MonthDaysTrigger(PhraseRule::AllMonthDays, rule.m_Months) : trigger;
    case Days::EveryWeeks:
      trigger.m_Type = TriggerRule::Weekly;
      trigger.m_WeeksInterval = rule.m_Count;
      trigger.m_DaysOfWeek = rule.m_Weekdays;
      return hasMonths ? MonthWeekTrigger(rule) : trigger;
    case Days::MonthDays:
      return MonthDaysTrigger(rule.m_MonthDays, rule.m_Months);
    case Days::LastDay:
      return MonthDaysTrigger(1L << 30, rule.m_Months);
    default:
      return MonthWeekTrigger(rule);
  }
}

}  // namespace

DayChoice::DayChoice(const PhraseRule& rule, long firstDay, const LocalCalendar& calendar)
    : m_Rule(rule), m_FirstDay(firstDay), m_Calendar(calendar), m_Trigger(TriggerOf(rule)) {}

bool DayChoice::Selects(long day) const {
  if (IsCounted() || m_Rule.m_Days == Days::Ordinal) {
    return WordedRule(m_Trigger, m_FirstDay, m_Calendar).Selects(day);
  }
  const LocalCalendar::Date date = m_Calendar.DateOf(day);
  if (m_Rule.m_Days == Days::LastDay) {
    return date.m_Day == date.m_DaysInMonth && HasBit(m_Rule.m_Months, date.m_Month);
  }
  if (IsOfEachWeek()) {
    return HasBit(m_Rule.m_Weekdays, date.m_Weekday) && HasBit(m_Rule.m_Months, date.m_Month);
  }
  return SchedulerTrigger::MasksSelect(m_Trigger, date);
}

bool DayChoice::IsOfEachWeek() const {
  return m_Rule.m_Days == Days::EveryWeeks && m_Rule.m_Months != PhraseRule::AllMonths;
}

}  // namespace NoxAgent
