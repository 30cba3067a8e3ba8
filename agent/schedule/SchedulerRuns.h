#pragma once

#include "agent/schedule/SchedulerTrigger.h"

#include <optional>
#include <vector>

namespace NoxAgent {

/// Tells when the scheduler runs a task. It knows the task's triggers, which share their last run,
/// and the moments at which an agent that never stops looks at them.
///
/// The scheduler looks when the task is added, at each local midnight, once an hour when it reads
/// the task files, and when a trigger has asked for it. Looks that cannot find the task due are
/// left out here. Every run takes no time and ends "Ok". Other tasks of the same agent would make
/// the scheduler look more often; there are none.
class SchedulerRuns {
 public:
  /// When the task is watched, and in which state it is at first. Moments in seconds since the
  /// epoch.
  struct Setting {
    long m_From = 0;          ///< when the task is added
    long m_Until = 0;         ///< later runs are not told; within the calendar
    long m_LastRun = NoTime;  ///< before m_From; NoTime: it never ran
    long m_Reading = 0;       ///< the files are read a whole number of hours before or after this
  };

  /// The calendar must outlive the object.
  SchedulerRuns(const LocalCalendar& calendar, std::vector<SchedulerTrigger> triggers,
                const Setting& setting);

  /// The next runs in the order of time: one, or several at equal distances. Nothing when there are
  /// no more up to m_Until.
  std::optional<RunSpan> Next();

 private:
  std::optional<RunSpan> RegularRepetitions();
  long EarliestChance() const;
  long FirstLookFrom(long moment) const;
  long LastCertainLook(long moment) const;
  long NextMidnight(long look) const;
  long LastReading(long moment) const;
  bool LookAt(long moment);
  void FindChances(long now);
  void ReadLastRunBack(long now);

  const LocalCalendar& m_Calendar;
  const std::vector<SchedulerTrigger> m_Triggers;
  const Setting m_Setting;
  std::vector<long> m_Chances;  ///< of each trigger: SchedulerTrigger::ChanceAfter
  long m_LastLook;
  long m_LastRun;
};

}  // namespace NoxAgent
