#pragma once

#include "agent/document/TriggerFields.h"
#include "agent/schedule/ScheduleComparison.h"

#include <string>

namespace NoxAgent {

/// Warns where the scheduler runs a trigger otherwise than its words say, within two years, with
/// the first date of each difference. The words count as people take them, by the calendar: "every
/// second day" is every second date.
class ScheduleCheck {
 public:
  /// The trigger is dated, has a begin date and has not ended. All arguments must outlive the
  /// object; `now` lies within the calendar.
  ScheduleCheck(const TriggerFields& trigger, const LocalCalendar& calendar, long now,
                ProblemList& problems);

  /// Warns about the run that a task without an earlier run gets at its begin date.
  void CheckFirstRun();
  /// Warns about all runs from then on.
  void CheckRuns();

 private:
  using Found = std::vector<ScheduleDifference>;

  void TellSkippedTime(const ScheduleDifference& difference);
  void TellPassedOver(const ScheduleDifference& difference);
  void TellLostPastMidnight(const ScheduleDifference& difference);
  void TellPeriodMeetsStart(const ScheduleDifference* late, const ScheduleDifference* lost);
  void TellForeignDays(const ScheduleDifference* missing, const ScheduleDifference* foreign);
  void TellCount(const std::string& effect);
  void TellWeek(const ScheduleDifference* missing, const ScheduleDifference* foreign);
  std::string LikeNextStart() const;
  std::string MendOfCount() const;
  std::string MendOfDuration(long gap) const;
  bool IsBetter(const TriggerRule& rule) const;
  std::string WrittenStart(long moment) const;
  std::string WeekdayInMonth(long day) const;
  TextPlace PlaceOr(const std::optional<SourceValue>& value) const;

  const TriggerFields& m_Fields;
  const LocalCalendar& m_Calendar;
  const long m_Now;
  ProblemList& m_Problems;
  const SchedulerTrigger m_Trigger;
};

}  // namespace NoxAgent
