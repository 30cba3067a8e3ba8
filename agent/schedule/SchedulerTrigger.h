#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <optional>

namespace NoxAgent {

/// Runs at equal distances: m_First, m_First + m_Step and so on to m_Last, in seconds since the
/// epoch. A single one has the step 0, or m_Last equal to m_First.
struct RunSpan {
  long m_First = 0;
  long m_Step = 0;
  long m_Last = 0;

  bool Has(long moment) const {
    return moment == m_First || (moment > m_First && moment <= m_Last && m_Step != 0 &&
                                 (moment - m_First) % m_Step == 0);
  }
};

/// One trigger as the scheduler reckons with it: when it starts, and whether it is due when the
/// scheduler looks at it.
///
/// The arithmetic is the scheduler's, oddities included; tests compare the two. It stands here a
/// second time because the agent does not see inside plug-ins, and because `check` asks about two
/// years at once. It holds for moments within the calendar, and for intervals and durations that
/// are not negative; a duration beyond a year counts as a year. Moments are seconds since the
/// epoch.
class SchedulerTrigger {
 public:
  /// Stands for "not within 32-bit time".
  static constexpr long Never = 2147483647L;

  /// `rule` has a begin date unless it is AsSoonAsPossible. The calendar must outlive the object.
  SchedulerTrigger(const TriggerRule& rule, const LocalCalendar& calendar);

  /// Whether the rule's masks and its week have the day; other rules have all days. Neither begin
  /// nor counts are looked at.
  static bool MasksSelect(const TriggerRule& rule, const LocalCalendar::Date& date);

  const TriggerRule& Rule() const { return m_Rule; }
  bool IsDated() const { return m_Rule.m_Type != TriggerRule::AsSoonAsPossible; }
  /// The local day of the begin date, and its time of day in seconds since midnight.
  long BeginDay() const { return m_BeginDay; }
  long Clock() const { return m_Clock; }

  /// The start on a local day; NoTime when there is none.
  long StartOn(long day) const;
  /// The first start after `moment`; Never when there is none up to `until`.
  long StartAfter(long moment, long until) const;

  /// Whether the scheduler runs the task when it looks at `now`; its last run was at `lastRun`.
  bool IsDue(long now, long lastRun) const;
  /// After a look at `now`, the moment at which the trigger asks the scheduler to look again; Never
  /// when it is content with midnight and the hourly readings.
  long WakeAfter(long now) const;
  /// The earliest moment after `now` at which a look may find the trigger due, if the scheduler has
  /// looked at `now`. Never when there is none up to `until`.
  long ChanceAfter(long now, long until) const;

  /// The repetitions that follow a run at `run` one by one, each exactly at its time. Nothing where
  /// that is not certain; then ask for each look with IsDue.
  std::optional<RunSpan> RegularRepetitionsAfter(long run) const;

 private:
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
