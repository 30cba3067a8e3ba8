#include "model/LocalTime.h"
#include "model/LocalZone.h"
#include "model/TaskTrigger.h"

#include <algorithm>
#include <chrono>

using Nox::Add32;
using Nox::LocalTime;
using Nox::LocalZone;
using Nox::Long32Min;
using Nox::Mul32;
using Nox::SecondsPerDay;
using Nox::Sub32;

namespace {

/// Later than this after its start a run counts as late.
constexpr long PunctualSeconds = 59;
/// The last repetition, at the very end of the active period, may be found this much after it.
constexpr long GraceSeconds = 5;
/// The search for the next run leaves out the minute that is under way.
constexpr long SearchAheadSeconds = 60;
/// Twenty years of 365 days: without an end date the search for the next run gives up there.
constexpr long SearchSpanSeconds = 7300 * SecondsPerDay;

/// The month, 0 is January, and the day, 0 is the 1st, as the masks count them.
struct MonthDay {
  int m_Month;
  int m_Day;
};

MonthDay MonthDayOf(long day) {
  const std::chrono::year_month_day date{std::chrono::local_days(std::chrono::days(day))};
  return {static_cast<int>(unsigned{date.month()}) - 1, static_cast<int>(unsigned{date.day()}) - 1};
}

/// 0 is Sunday.
int WeekdayOf(long day) {
  constexpr long FirstWeekday = 4;  // 1970-01-01 was a Thursday
  const long weekday = (day + FirstWeekday) % 7;
  return static_cast<int>(weekday < 0 ? weekday + 7 : weekday);
}

bool HasBit(std::uint32_t mask, int bit) {
  return ((mask >> bit) & 1u) != 0;
}

/// Kept on purpose: the 7th already belongs to the second week, and the fifth starts on the 28th.
long WeekOfMonth(const MonthDay& date) {
  return (date.m_Day + 1) / 7 + 1;
}

/// `divisor` is 0 only in a trigger that was disabled before its counts were read: as if it were 1.
bool IsMultiple(long number, long divisor) {
  return divisor == 0 || number % divisor == 0;
}

}  // namespace

long CTaskTrigger::GetTriggerStartTime(const long& t) const {
  if (m_Type == AsSoonAsPossible) {
    return t;
  }
  const LocalZone& zone = LocalZone::InForce();
  const long day = zone.LocalTimeAt(t).m_Day;
  if (!MasksSelect(day)) {
    return NoTime;
  }
  const LocalTime begin = zone.LocalTimeAt(m_BeginDate);
  const long start = zone.MomentOf({day, begin.m_Second});
  if (start == NoTime) {
    return NoTime;
  }
  const long days = Sub32(start, m_BeginDate) / SecondsPerDay;
  if (days < 0) {
    return NoTime;
  }
  // Less than a day before the begin counts as no day: only the begin's own day may start then.
  if (days == 0 && t < m_BeginDate && day != begin.m_Day) {
    return NoTime;
  }
  return CountSelects(days, day, begin.m_Day) ? start : NoTime;
}

/// Whether the calendar alone lets the day pass.
bool CTaskTrigger::MasksSelect(long day) const {
  switch (m_Type) {
    case Weekly:
      return HasBit(m_DaysOfWeek, WeekdayOf(day));
    case MonthlyByDate: {
      const MonthDay date = MonthDayOf(day);
      return HasBit(m_MonthsOfYear, date.m_Month) && HasBit(m_DaysOfMonth, date.m_Day);
    }
    case MonthlyByWeekday: {
      const MonthDay date = MonthDayOf(day);
      return HasBit(m_MonthsOfYear, date.m_Month) && HasBit(m_DaysOfWeek, WeekdayOf(day)) &&
             WeekOfMonth(date) == m_Week;
    }
    default:
      return true;
  }
}

/// Whether the distance from the begin, in elapsed days, lets the day pass.
bool CTaskTrigger::CountSelects(long days, long day, long beginDay) const {
  switch (m_Type) {
    case Once:
      return days == 0 && day == beginDay;
    case Daily:
      return IsMultiple(days, m_DaysInterval);
    case Weekly:
      return IsMultiple((days + WeekdayOf(beginDay)) / 7, m_WeeksInterval);
    default:
      return true;
  }
}

bool CTaskTrigger::IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late,
                         bool& expired, bool& nextRunChanged) {
  return IsDueAt(Nox::Now(), firstEvent, secondEvent, sleepSeconds, late, expired, nextRunChanged);
}

bool CTaskTrigger::IsDueAt(long now, bool firstEvent, bool secondEvent, long& sleepSeconds,
                           bool& late, bool& expired, bool& nextRunChanged) {
  const Finding found = Examine(now, firstEvent, secondEvent);
  late = found.m_Late.value_or(late);
  expired = expired || found.m_Expired;
  if (found.m_NextStart > now) {
    sleepSeconds = std::min(sleepSeconds, Sub32(found.m_NextStart, now));
  }

  const long previous = m_NextRun;
  if (found.m_NextStart < 1 || found.m_NextStart <= now) {
    CalculateNextRunTime(Add32(now, SearchAheadSeconds), expired);
  } else {
    m_NextRun = found.m_NextStart;
  }
  nextRunChanged = m_NextRun != previous;
  return found.m_Due;
}

CTaskTrigger::Finding CTaskTrigger::Examine(long now, bool firstEvent, bool secondEvent) const {
  if (m_Disabled) {
    return {};
  }
  Finding found;
  switch (m_Type) {
    case SecondEvent:
      found.m_Due = secondEvent;
      return found;
    case FirstEvent:
      found.m_Due = firstEvent;
      return found;
    case AsSoonAsPossible:
      found.m_Due = *m_pLastRun == NoTime;
      found.m_Expired = true;
      return found;
    default:
      return ExamineDated(now);
  }
}

CTaskTrigger::Finding CTaskTrigger::ExamineDated(long now) const {
  Finding found;
  if (now < m_BeginDate) {
    const long start = GetTriggerStartTime(now);
    if (start != NoTime) {
      found.m_NextStart = start;
    }
    return found;
  }
  if (m_EndDate != NoTime && now > m_EndDate) {
    found.m_Expired = true;
    return found;
  }
  const long start = LatestStartNotYetRun(now);
  found.m_Due = StillToRun(start, now);
  if (found.m_Due) {
    found.m_Late = Sub32(now, start) > PunctualSeconds;
  }
  found.m_NextStart = NextStartAfter(now);
  return found;
}

/// Where the walk over days sets out: at the last run or, without one, at the begin.
long CTaskTrigger::WalkOrigin(long now) const {
  const long lastRun = *m_pLastRun;
  const bool ranInFuture = GetTriggerStartTime(lastRun) > now;
  const long origin = ranInFuture ? GetTriggerStartTime(Sub32(lastRun, m_Duration)) : lastRun;
  return origin == NoTime ? m_BeginDate : origin;
}

/// Walks from start to start up to `now`: the first start after the last run, or else the
/// repetition under way. When there is neither, a moment that StillToRun refuses.
///
/// The cursor goes on from each start, and from each start once only: after a day of 25 hours the
/// step from a start in its first hour ends on the same day, before the same start, and going on
/// from there again would never end. So every step but finitely many moves the cursor by a day,
/// also where a step stops at the end of the 32-bit range.
long CTaskTrigger::LatestStartNotYetRun(long now) const {
  const long lastRun = *m_pLastRun;
  long candidate = WalkOrigin(now);
  long lastStart = Long32Min;
  for (long cursor = candidate;; cursor = Add32(cursor, SecondsPerDay)) {
    const long start = GetTriggerStartTime(cursor);
    if (start > now) {
      return candidate;
    }
    if (start != NoTime) {
      candidate = start;
      if (lastRun == NoTime || lastRun < start) {
        return candidate;
      }
      if (Repeats() && Sub32(now, start) <= Add32(m_Duration, GraceSeconds)) {
        return RepetitionFrom(start, now, 0);
      }
      if (start > lastStart) {
        cursor = lastStart = start;
      }
    }
    if (cursor >= now || (lastRun != NoTime && lastRun < candidate)) {
      return candidate;
    }
  }
}

bool CTaskTrigger::StillToRun(long start, long now) const {
  const long lastRun = *m_pLastRun;
  if (start > now) {
    return false;
  }
  if (lastRun == NoTime) {
    return true;
  }
  if (lastRun >= start) {
    return false;
  }
  return m_Type != Once || lastRun < Add32(m_BeginDate, m_Duration);
}

/// The start or repetition that comes next; at or before `now`, or NoTime, when it is not today.
long CTaskTrigger::NextStartAfter(long now) const {
  const long periodAgo = Sub32(now, m_Duration);
  long next = GetTriggerStartTime(periodAgo);
  if (next == NoTime || next < periodAgo) {
    next = GetTriggerStartTime(now);
  }
  if (!Repeats() || next == NoTime || next > now) {
    return next;
  }
  const long repetition = RepetitionFrom(next, now, 1);
  return repetition <= Add32(next, m_Duration) ? repetition : next;
}

/// The repetition of `start` that is the latest at or before `now`, or `ahead` intervals after it.
long CTaskTrigger::RepetitionFrom(long start, long now, long ahead) const {
  const long count = Add32(Sub32(now, start) / m_Interval, ahead);
  return Add32(start, Mul32(count, m_Interval));
}

void CTaskTrigger::CalculateNextRunTime(long from, bool expired) {
  m_NextRun = NoTime;
  if (m_Disabled || expired || m_Type == FirstEvent || m_Type == SecondEvent) {
    return;
  }
  if (m_EndDate != NoTime && from >= m_EndDate) {
    return;
  }
  if (from >= m_BeginDate && m_Type == Once) {
    return;
  }

  const long first = std::max(from, m_BeginDate);
  const long limit = m_EndDate != NoTime ? m_EndDate : Add32(first, SearchSpanSeconds);
  for (long cursor = first; cursor < limit; cursor = Add32(cursor, SecondsPerDay)) {
    const long start = GetTriggerStartTime(cursor);
    if (start == from || (start != NoTime && start > from)) {
      m_NextRun = start;
      return;
    }
  }
}

void CTaskTrigger::UpdateClosestRun(bool taskEnabled) {
  if (!taskEnabled) {
    m_NextRun = NoTime;
    m_ClosestRun = NoTime;
    return;
  }
  const long now = Nox::Now();
  long sleepSeconds = 0;
  bool late = false;
  bool expired = false;
  bool nextRunChanged = false;
  const bool due = IsDueAt(now, false, false, sleepSeconds, late, expired, nextRunChanged);
  m_ClosestRun = due ? now : m_NextRun;
}
