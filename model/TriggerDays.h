#pragma once

#include "model/LocalZone.h"
#include "model/TaskTrigger.h"

#include <array>
#include <cstdint>

namespace Nox {

/// The local days that a trigger selects, and the starts on them. Made for one question to the
/// trigger and gone with it: what does not change meanwhile is looked up once. The trigger is
/// borrowed.
///
/// Days are counted as in LocalTime.
class TriggerDays {
 public:
  explicit TriggerDays(const CTaskTrigger& trigger);

  /// What CTaskTrigger::GetTriggerStartTime says.
  long StartOnDayOf(long moment);

  /// Whether no local day from that of `moment` on is selected, nor the one before it.
  bool SelectsNothingFrom(long moment) const;

  /// Where the local day of `moment` ends, on a day on which the clock does not change.
  long EndOfDay(long moment) const;
  /// Whether the clock does not change from the one moment to the other.
  bool IsSteady(long from, long to) const { return m_Zone.IsSteady(from, to); }

  /// The moment to which steps of 86400 seconds lead from `cursor`: one step, or as many as surely
  /// meet no selected day. Of these no more than lead to `until` or past it.
  long StepOn(long cursor, long until) const;

 private:
  /// Later than any day that a moment can lie on.
  static constexpr long NoDay = Long32Max;

  long StartOn(long day, bool isBeforeBegin) const;
  bool MasksSelect(long day) const;
  std::uint32_t SelectedDays(int month, long firstDay) const;
  bool CountSelects(long days, long day) const;
  long NextSelectedDay(long day) const;
  long NextDayOfMonth(long day) const;

  const CTaskTrigger& m_Trigger;
  const LocalZone& m_Zone;
  const LocalTime m_Begin;

  /// An answer, to be given again.
  struct Answer {
    long m_Day = NoDay;
    bool m_IsBeforeBegin = false;
    long m_Start = CTaskTrigger::NoTime;
  };
  // Those for an even and an odd day: most questions ask for today and tomorrow several times.
  std::array<Answer, 2> m_Answers;
};

}  // namespace Nox
