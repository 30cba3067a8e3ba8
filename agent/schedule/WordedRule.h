#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

namespace NoxAgent {

/// What the words of a rule mean to people, by the calendar: every second day is every second date,
/// the first Monday of a month may be its 7th, and week 5 is the last such weekday of its month.
class WordedRule {
 public:
  /// `rule` has a begin date; `beginDay` is its local day. The calendar must outlive the object.
  WordedRule(const TriggerRule& rule, long beginDay, const LocalCalendar& calendar);

  /// Whether the rule has a start on that local day. The end date is not looked at.
  bool Selects(long day) const;

 private:
  bool IsInWeek(const LocalCalendar::Date& date) const;

  TriggerRule m_Rule;
  long m_BeginDay;
  const LocalCalendar* m_Calendar;
};

}  // namespace NoxAgent
