#pragma once

#include "model/TaskTrigger.h"
#include "tests/proof/PlainSchedule.h"

#include <ctime>

/// The schedule of a trigger by the C library alone: every question about a local time goes to
/// localtime_r and mktime, and every search takes one step of 86400 seconds after the other. Slow,
/// and the measure for model/, which must say the same to the second.
///
/// The trigger is borrowed, with its last run; of type Once, Daily, Weekly, MonthlyByDate or
/// MonthlyByWeekday or below AsSoonAsPossible, and enabled.
class SteppedSchedule {
 public:
  explicit SteppedSchedule(const CTaskTrigger& trigger);

  long StartOnDayOf(long moment) const;
  long NextRun(long from, bool expired) const;
  PlainSchedule::Answer Ask(long now, long sleepSeconds) const;

 private:
  bool MasksSelect(const std::tm& day) const;
  bool CountSelects(long days, const std::tm& day) const;
  long LatestStart(long now) const;
  long NextStart(long now) const;

  const CTaskTrigger& m_Trigger;
  const std::tm m_Begin;
};
