#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// The days of a rule in words, by the calendar.
class DayChoice {
 public:
  /// `firstDay` is the day (in the week) from which on counts go. The rule has days: it is none of
  /// Now, Once and Cron. The calendar must outlive the object.
  DayChoice(const PhraseRule& rule, long firstDay, const LocalCalendar& calendar);

  bool Selects(long day) const;
  /// Whether days are counted, so that it matters which one is the first.
  bool IsCounted() const { return m_Rule.m_Count > 1; }
  /// A trigger for these days without begin, end and repetition; of an Ordinal that of its week,
  /// which has some of the days and may have others; of weekdays in some months that of the first
  /// week; of a LastDay that of months of 31 days.
  const TriggerRule& Trigger() const { return m_Trigger; }
  /// Weekdays in some months, which take a trigger for each week of the month.
  bool IsOfEachWeek() const;

 private:
  const PhraseRule& m_Rule;
  const long m_FirstDay;
  const LocalCalendar& m_Calendar;
  TriggerRule m_Trigger;
};

}  // namespace NoxAgent
