// How long the answer of a due test that found nothing due goes on being the answer.
//
// It changes with a start, a repetition, the end of an active period, midnight, the begin and the
// end: the spell ends before the first of these. Where more than that may matter, as near a change
// of the clock, there is no spell, and each due test looks for itself.
#include "model/DueTest.h"
#include "model/LocalZone.h"
#include "model/TaskTrigger.h"
#include "model/TriggerDays.h"

#include <algorithm>

using Nox::Add32;
using Nox::GraceSeconds;
using Nox::Long32Max;
using Nox::SearchAheadSeconds;
using Nox::SecondsPerDay;
using Nox::Sub32;
using Nox::TriggerDays;

CTaskTrigger::Grounds CTaskTrigger::GroundsNow() const {
  return {&Nox::LocalZone::InForce(),
          *m_pLastRun,
          m_Type,
          m_Interval,
          m_Duration,
          m_Disabled,
          m_BeginDate,
          m_EndDate,
          m_DaysInterval,
          m_WeeksInterval,
          m_DaysOfWeek,
          m_DaysOfMonth,
          m_MonthsOfYear,
          m_Week};
}

bool CTaskTrigger::IsQuietAt(long now, const Grounds& grounds) const {
  return now >= m_Quiet.m_Begin && now < m_Quiet.m_End && m_Quiet.m_Grounds == grounds;
}

void CTaskTrigger::KeepWhileQuiet(TriggerDays& days, long now, const Grounds& grounds,
                                  const Finding& found) {
  const bool isDated =
      !m_Disabled && m_Type != AsSoonAsPossible && m_Type != FirstEvent && m_Type != SecondEvent;
  m_Quiet.m_Begin = now;
  m_Quiet.m_End = isDated && !found.m_Due ? QuietUntil(days, now, found) : now;
  if (m_Quiet.m_End > now) {
    m_Quiet.m_Grounds = grounds;
    m_Quiet.m_Finding = found;
    m_Quiet.m_NextRun = m_NextRun;
  }
}

CTaskTrigger::QuietTime CTaskTrigger::KnownQuietTime() const {
  if (!IsQuietAt(m_Quiet.m_Begin, GroundsNow())) {
    return {};
  }
  const long nextStart = m_Quiet.m_Finding.m_NextStart;
  const bool isAhead = nextStart > m_Quiet.m_Begin;
  return {m_Quiet.m_Begin, m_Quiet.m_End, isAhead ? std::optional(nextStart) : std::nullopt};
}

/// At or before `now` when there is no spell.
long CTaskTrigger::QuietUntil(TriggerDays& days, long now, const Finding& found) const {
  if (found.m_Expired) {
    return Long32Max;
  }
  if (now < m_BeginDate) {
    return QuietUntilBegin(days, now);
  }
  if (!IsPlain(now)) {
    return now;
  }
  const long periodAgo = Sub32(now, m_Duration);
  const long end = m_EndDate == NoTime ? Long32Max : m_EndDate;
  if (days.SelectsNothingFrom(periodAgo)) {
    return end;
  }
  if (!IsSearchPlain(days, now)) {
    return now;
  }
  long until = std::min(end, days.EndOfDay(now));
  // The days on which a period may have started that is not quite over, and today.
  for (const long moment : {Sub32(periodAgo, GraceSeconds + 1), periodAgo, now}) {
    until = std::min(until, NextChangeOf(days.StartOnDayOf(moment), now));
  }
  return m_NextRun == NoTime ? until : std::min(until, Sub32(m_NextRun, SearchAheadSeconds - 1));
}

long CTaskTrigger::QuietUntilBegin(const TriggerDays& days, long now) const {
  const long begin = m_EndDate == NoTime ? m_BeginDate : std::min(m_BeginDate, m_EndDate);
  const long until = std::min(days.EndOfDay(now), Sub32(begin, SearchAheadSeconds));
  return days.IsSteady(now, Add32(now, SecondsPerDay)) ? until : now;
}

/// Whether the latest start not yet run is as the last run and the two days before now make it.
bool CTaskTrigger::IsPlain(long now) const {
  const long lastRun = *m_pLastRun;
  return lastRun != NoTime && lastRun <= now && m_Interval >= 0 && m_Duration >= 0 &&
         m_Duration < SecondsPerDay;
}

/// Whether the search for the next run meets the same days from any moment of today.
bool CTaskTrigger::IsSearchPlain(const TriggerDays& days, long now) const {
  constexpr long Margin = 2 * SecondsPerDay;
  const bool mayFind = m_Type != Once;
  if (m_NextRun == NoTime && mayFind) {
    return false;
  }
  const long end = m_EndDate == NoTime ? Long32Max : m_EndDate;
  const long last = std::max(now, m_NextRun);
  return Add32(last, Margin) < end &&
         days.IsSteady(Sub32(Sub32(now, m_Duration), Margin), Add32(last, Margin));
}

/// The first moment after `now` at which a start makes a difference.
long CTaskTrigger::NextChangeOf(long start, long now) const {
  if (start == NoTime) {
    return Long32Max;
  }
  if (start > now) {
    return start;
  }
  const long periodEnd = Add32(start, m_Duration);
  const long next = periodEnd >= now ? Add32(periodEnd, 1) : Long32Max;
  return Repeats() ? std::min(next, RepetitionFrom(start, now, 1)) : next;
}
