#include "model/DueTest.h"
#include "model/LocalTime.h"
#include "model/LocalZone.h"
#include "model/TaskTrigger.h"
#include "model/TriggerDays.h"

#include <algorithm>

using Nox::Add32;
using Nox::GraceSeconds;
using Nox::Long32Min;
using Nox::Mul32;
using Nox::PunctualSeconds;
using Nox::SearchAheadSeconds;
using Nox::SecondsPerDay;
using Nox::Sub32;
using Nox::TriggerDays;

namespace {

/// Twenty years of 365 days: without an end date the search for the next run gives up there.
constexpr long SearchSpanSeconds = 7300 * SecondsPerDay;

}  // namespace

long CTaskTrigger::GetTriggerStartTime(const long& t) const {
  return TriggerDays(*this).StartOnDayOf(t);
}

bool CTaskTrigger::IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late,
                         bool& expired, bool& nextRunChanged) {
  return IsDueAt(Nox::Now(), firstEvent, secondEvent, sleepSeconds, late, expired, nextRunChanged);
}

bool CTaskTrigger::IsDueAt(long now, bool firstEvent, bool secondEvent, long& sleepSeconds,
                           bool& late, bool& expired, bool& nextRunChanged) {
  const long previous = m_NextRun;
  const Finding found = Find(now, firstEvent, secondEvent, expired);
  late = found.m_Late.value_or(late);
  expired = expired || found.m_Expired;
  if (found.m_NextStart > now) {
    sleepSeconds = std::min(sleepSeconds, Sub32(found.m_NextStart, now));
  }
  nextRunChanged = m_NextRun != previous;
  return found.m_Due;
}

/// Sets m_NextRun as well. `expired` is what the caller knows already.
CTaskTrigger::Finding CTaskTrigger::Find(long now, bool firstEvent, bool secondEvent,
                                         bool expired) {
  // Taken before the zone is asked: if another is in force by then, the answer is not found again.
  const Grounds grounds = GroundsNow();
  if (!expired && IsQuietAt(now, grounds)) {
    m_NextRun = m_Quiet.m_NextRun;
    return m_Quiet.m_Finding;
  }
  TriggerDays days(*this);
  const Finding found = Examine(days, now, firstEvent, secondEvent);
  if (found.m_NextStart < 1 || found.m_NextStart <= now) {
    m_NextRun = NextRunFrom(days, Add32(now, SearchAheadSeconds), expired || found.m_Expired);
  } else {
    m_NextRun = found.m_NextStart;
  }
  if (!expired) {
    KeepWhileQuiet(days, now, grounds, found);
  }
  return found;
}

CTaskTrigger::Finding CTaskTrigger::Examine(TriggerDays& days, long now, bool firstEvent,
                                            bool secondEvent) const {
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
      return ExamineDated(days, now);
  }
}

CTaskTrigger::Finding CTaskTrigger::ExamineDated(TriggerDays& days, long now) const {
  Finding found;
  if (now < m_BeginDate) {
    const long start = days.StartOnDayOf(now);
    if (start != NoTime) {
      found.m_NextStart = start;
    }
    return found;
  }
  if (m_EndDate != NoTime && now > m_EndDate) {
    found.m_Expired = true;
    return found;
  }
  const long start = LatestStartNotYetRun(days, now);
  found.m_Due = StillToRun(start, now);
  if (found.m_Due) {
    found.m_Late = Sub32(now, start) > PunctualSeconds;
  }
  found.m_NextStart = NextStartAfter(days, now);
  return found;
}

/// Where the walk over days sets out: at the last run or, without one, at the begin.
long CTaskTrigger::WalkOrigin(TriggerDays& days, long now) const {
  const long lastRun = *m_pLastRun;
  const bool ranInFuture = days.StartOnDayOf(lastRun) > now;
  const long origin = ranInFuture ? days.StartOnDayOf(Sub32(lastRun, m_Duration)) : lastRun;
  return origin == NoTime ? m_BeginDate : origin;
}

/// Walks from start to start up to `now`: the first start after the last run, or else the
/// repetition under way. When there is neither, a moment that StillToRun refuses.
///
/// The cursor goes on from each start, and from each start once only: after a day of 25 hours the
/// step from a start in its first hour ends on the same day, before the same start, and going on
/// from there again would never end. So every step but finitely many moves the cursor by a day,
/// also where a step stops at the end of the 32-bit range.
long CTaskTrigger::LatestStartNotYetRun(TriggerDays& days, long now) const {
  const long lastRun = *m_pLastRun;
  long candidate = WalkOrigin(days, now);
  long lastStart = Long32Min;
  for (long cursor = candidate;; cursor = days.StepOn(cursor, now)) {
    const long start = days.StartOnDayOf(cursor);
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
long CTaskTrigger::NextStartAfter(TriggerDays& days, long now) const {
  const long periodAgo = Sub32(now, m_Duration);
  long next = days.StartOnDayOf(periodAgo);
  if (next == NoTime || next < periodAgo) {
    next = days.StartOnDayOf(now);
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
  TriggerDays days(*this);
  m_NextRun = NextRunFrom(days, from, expired);
}

long CTaskTrigger::NextRunFrom(TriggerDays& days, long from, bool expired) const {
  if (m_Disabled || expired || m_Type == FirstEvent || m_Type == SecondEvent) {
    return NoTime;
  }
  if (m_EndDate != NoTime && from >= m_EndDate) {
    return NoTime;
  }
  if (from >= m_BeginDate && m_Type == Once) {
    return NoTime;
  }

  const long first = std::max(from, m_BeginDate);
  const long limit = m_EndDate != NoTime ? m_EndDate : Add32(first, SearchSpanSeconds);
  for (long cursor = first; cursor < limit; cursor = days.StepOn(cursor, limit)) {
    const long start = days.StartOnDayOf(cursor);
    if (start == from || (start != NoTime && start > from)) {
      return start;
    }
  }
  return NoTime;
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
