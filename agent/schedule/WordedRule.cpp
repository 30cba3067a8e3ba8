#include "agent/schedule/WordedRule.h"

namespace NoxAgent {

namespace {

constexpr long DaysOfAWeek = 7;

// Weeks begin on Sundays; 1970-01-01, day 0, was a Thursday. For days from 1969-12-28 on.
long WeekOf(long day) {
  constexpr long DaysFromSunday = 4;
  return (day + DaysFromSunday) / DaysOfAWeek;
}

}  // namespace

WordedRule::WordedRule(const TriggerRule& rule, long beginDay, const LocalCalendar& calendar)
    : m_Rule(rule), m_BeginDay(beginDay), m_Calendar(&calendar) {}

bool WordedRule::Selects(long day) const {
  if (day < m_BeginDay) {
    return false;
  }
  const LocalCalendar::Date date = m_Calendar->DateOf(day);
  switch (m_Rule.m_Type) {
    case TriggerRule::Once:
      return day == m_BeginDay;
    case TriggerRule::Daily:
      return (day - m_BeginDay) % m_Rule.m_DaysInterval == 0;
    case TriggerRule::Weekly:
      return HasBit(m_Rule.m_DaysOfWeek, date.m_Weekday) &&
             (WeekOf(day) - WeekOf(m_BeginDay)) % m_Rule.m_WeeksInterval == 0;
    case TriggerRule::MonthlyByDate:
      return HasBit(m_Rule.m_MonthsOfYear, date.m_Month) &&
             HasBit(m_Rule.m_DaysOfMonth, date.m_Day - 1);
    case TriggerRule::MonthlyByWeekday:
      return HasBit(m_Rule.m_MonthsOfYear, date.m_Month) &&
             HasBit(m_Rule.m_DaysOfWeek, date.m_Weekday) && IsInWeek(date);
    default:
      return true;
  }
}

bool WordedRule::IsInWeek(const LocalCalendar::Date& date) const {
  if (m_Rule.m_Week == TriggerRule::LastWeek) {
    return date.m_Day + DaysOfAWeek > date.m_DaysInMonth;
  }
  return (date.m_Day - 1) / DaysOfAWeek + 1 == m_Rule.m_Week;
}

}  // namespace NoxAgent
