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
  bool SelectsNothingFrom(long moment);

  /// Where the local day of `moment` ends, on a day on which the clock does not change.
  long EndOfDay(long moment) const;
  /// Whether the clock does not change from the one moment to the other.
  bool IsSteady(long from, long to) const { return m_Zone.IsSteady(from, to); }

  /// The moment to which steps of 86400 seconds lead from `cursor`: one step, or as many as surely
  /// meet no selected day. Of these no more than lead to `until` or past it.
  long StepOn(long cursor, long until);

 private:
  /// Later than any day that a moment can lie on.
  static constexpr long NoDay = Long32Max;

  long StartOn(long day, bool isBeforeBegin);
  bool MasksSelect(long day);
  bool MonthSelects(long day);
  std::uint32_t SelectedDays(int month, long firstDay) const;
  bool CountSelects(long days, long day) const;
  long DayOf(long moment) {
    if (moment != m_KnownDay.m_Moment) {
      m_KnownDay = {moment, m_Zone.LocalTimeAt(moment).m_Day};
    }
    return m_KnownDay.m_Day;
  }
  /// The first day at or after `day` that may be selected; NoDay when there is none.
  long NextSelectedDay(long day) {
    if (!m_Gap.Has(day)) {
      m_Gap = {day, FindSelectedDay(day)};
    }
    return m_Gap.m_End;
  }
  long FindSelectedDay(long day) const;
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

  struct KnownDay {
    long m_Moment;
    long m_Day;
  };
  KnownDay m_KnownDay;  ///< as asked last: a walk asks for the start on a day, then steps from it

  /// Days of which none is selected.
  struct Gap {
    bool Has(long day) const { return m_Begin <= day && day < m_End; }

    long m_Begin = NoDay;
    long m_End = NoDay;  ///< the first that may be selected
  };
  Gap m_Gap;  ///< as found last: a walk jumps close to its end and then steps
};

}  // namespace Nox
