#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <optional>

namespace NoxAgent {

/// Runs at equal distances.
struct RunSpan {
  long m_First = 0;
  long m_Step = 0;
  long m_Last = 0;

  bool Has(long moment) const {
    return moment == m_First || (moment > m_First && moment <= m_Last && m_Step != 0 &&
                                 (moment - m_First) % m_Step == 0);
  }
};

/// One trigger as the scheduler reckons with it: its starts, and what it makes of a moment at which
/// it looks at the trigger.
///
/// The arithmetic is the scheduler's, oddities included; tests hold it against the scheduler. It
/// lives here a second time because the agent knows no plug-in's insides, and because `check` asks
/// for two years at once. Valid for moments from the beginning of the calendar to its end, and for
/// intervals and durations that are not negative; a duration beyond a year counts as a year.
class SchedulerTrigger {
 public:
  static constexpr long Never = 2147483647L;

  /// `rule` has a begin date unless it is AsSoonAsPossible. The calendar must outlive the object.
  SchedulerTrigger(const TriggerRule& rule, const LocalCalendar& calendar);

  const TriggerRule& Rule() const { return m_Rule; }
  bool IsDated() const { return m_Rule.m_Type != TriggerRule::AsSoonAsPossible; }
  /// The local day of the begin date, and its time of day in seconds.
  long BeginDay() const { return m_BeginDay; }
  long Clock() const { return m_Clock; }

  /// The start on a local day; NoTime when there is none.
  long StartOn(long day) const;
  /// The first start after `moment`; Never when there is none up to `until`.
  long StartAfter(long moment, long until) const;

  /// Whether the scheduler runs the task when it looks at `now`; its last run was at `lastRun`.
  bool IsDue(long now, long lastRun) const;
  /// When the trigger asks the scheduler to look again, after it has looked at `now`; Never when it
  /// leaves that to the scheduler's own hours.
  long WakeAfter(long now) const;
  /// No look between `now` and this moment can find the trigger due, if one at `now` has been made.
  /// Never when there is nothing up to `until`.
  long ChanceAfter(long now, long until) const;

  /// After a run at `run`: the repetitions that follow one by one, each exactly at its time.
  /// Nothing where that is not certain; the single looks tell then.
  std::optional<RunSpan> RegularRepetitionsAfter(long run) const;

 private:
  bool MasksSelect(const LocalCalendar::Date& date) const;
  bool CountSelects(long days, long day) const;
  long StartOnDayOf(long moment) const { return StartOn(m_Calendar->DayOf(moment)); }
  long WalkOrigin(long now, long lastRun) const;
  long LatestStartNotYetRun(long now, long lastRun) const;
  long RepetitionAfter(long now) const;
  bool IsCoveredByOlderStart(long moment) const;
  bool HasEnded(long moment) const;
  /// The repetition of `start` after `moment`, which is not before the start.
  long RepetitionOf(long start, long moment) const;

  TriggerRule m_Rule;
  const LocalCalendar* m_Calendar;
  long m_BeginDay = 0;
  int m_BeginWeekday = 0;
  long m_Clock = 0;
};

}  // namespace NoxAgent
