#include "agent/schedule/SchedulerTrigger.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace NoxAgent {

using BaseSDK::Add32;
using BaseSDK::Sub32;

namespace {

/// The last repetition may be found this much after the end of its period.
constexpr long GraceSeconds = 5;
constexpr long LongestDuration = 366 * LocalCalendar::SecondsPerDay;

}  // namespace

SchedulerTrigger::SchedulerTrigger(const TriggerRule& rule, const LocalCalendar& calendar)
    : m_Rule(rule), m_Calendar(&calendar) {
  m_Rule.m_DurationSeconds = std::min(m_Rule.m_DurationSeconds, LongestDuration);
  if (m_Rule.m_End != NoTime) {
    m_Rule.m_End = std::max(m_Rule.m_End, m_Rule.m_Begin);
  }
  // The C library is asked, because this may lie long before the calendar.
  const std::time_t begin = m_Rule.m_Begin;
  std::tm fields{};
  (void)::localtime_r(&begin, &fields);
  m_BeginWeekday = fields.tm_wday;
  m_Clock = fields.tm_hour * 3600L + fields.tm_min * 60L + fields.tm_sec;
  const std::chrono::year_month_day date(
      std::chrono::year(fields.tm_year + 1900),
      std::chrono::month(static_cast<unsigned>(fields.tm_mon) + 1),
      std::chrono::day(static_cast<unsigned>(fields.tm_mday)));
  m_BeginDay = static_cast<long>(std::chrono::sys_days(date).time_since_epoch().count());
}

long SchedulerTrigger::StartOn(long day) const {
  if (!IsDated() || day < m_BeginDay || !MasksSelect(m_Rule, m_Calendar->DateOf(day))) {
    return NoTime;
  }
  const long start = m_Calendar->MomentOf(day, m_Clock);
  return CountSelects(Sub32(start, m_Rule.m_Begin) / LocalCalendar::SecondsPerDay, day) ? start
                                                                                        : NoTime;
}

bool SchedulerTrigger::MasksSelect(const TriggerRule& rule, const LocalCalendar::Date& date) {
  switch (rule.m_Type) {
    case TriggerRule::Weekly:
      return HasBit(rule.m_DaysOfWeek, date.m_Weekday);
    case TriggerRule::MonthlyByDate:
      return HasBit(rule.m_MonthsOfYear, date.m_Month) &&
             HasBit(rule.m_DaysOfMonth, date.m_Day - 1);
    case TriggerRule::MonthlyByWeekday:
      // Days 1 to 6 are week 1, and the 7th is in week 2.
      return HasBit(rule.m_MonthsOfYear, date.m_Month) &&
             HasBit(rule.m_DaysOfWeek, date.m_Weekday) && date.m_Day / 7 + 1 == rule.m_Week;
    default:
      return true;
  }
}

// Days that have elapsed are counted, of 86400 seconds each, not days of the calendar.
bool SchedulerTrigger::CountSelects(long days, long day) const {
  switch (m_Rule.m_Type) {
    case TriggerRule::Once:
      return day == m_BeginDay;
    case TriggerRule::Daily:
      return m_Rule.m_DaysInterval == 1 || days % m_Rule.m_DaysInterval == 0;
    case TriggerRule::Weekly:
      return m_Rule.m_WeeksInterval == 1 ||
             (days + m_BeginWeekday) / 7 % m_Rule.m_WeeksInterval == 0;
    default:
      return true;
  }
}

long SchedulerTrigger::StartAfter(long moment, long until) const {
  const long lastDay = m_Calendar->DayOf(until);
  // From the day before, whose start may lie behind a gap at midnight.
  for (long day = std::max(m_BeginDay, m_Calendar->DayOf(moment) - 1); day <= lastDay; ++day) {
    const long start = StartOn(day);
    if (start != NoTime && start > moment) {
      return HasEnded(start) ? Never : start;
    }
    if (m_Rule.m_Type == TriggerRule::Once) {
      return Never;
    }
  }
  return Never;
}

bool SchedulerTrigger::HasEnded(long moment) const {
  return m_Rule.m_End != NoTime && moment > m_Rule.m_End;
}

bool SchedulerTrigger::IsDue(long now, long lastRun) const {
  if (!IsDated()) {
    return lastRun == NoTime;
  }
  if (now < m_Rule.m_Begin || HasEnded(now)) {
    return false;
  }
  // The walk sets out at the begin date then, and so finds something whatever the day.
  if (lastRun == NoTime) {
    return true;
  }
  const long start = LatestStartNotYetRun(now, lastRun);
  return start <= now && lastRun < start &&
         (m_Rule.m_Type != TriggerRule::Once ||
          lastRun < Add32(m_Rule.m_Begin, m_Rule.m_DurationSeconds));
}

long SchedulerTrigger::WalkOrigin(long now, long lastRun) const {
  if (StartOnDayOf(lastRun) <= now) {
    return lastRun;
  }
  const long start = StartOnDayOf(lastRun - m_Rule.m_DurationSeconds);
  return start == NoTime ? m_Rule.m_Begin : start;
}

// From start to start by steps of 86400 seconds, up to `now`: a step may pass over a day that is
// shorter.
long SchedulerTrigger::LatestStartNotYetRun(long now, long lastRun) const {
  long candidate = WalkOrigin(now, lastRun);
  long lastStart = BaseSDK::Long32Min;
  for (long cursor = candidate;; cursor += LocalCalendar::SecondsPerDay) {
    const long start = StartOnDayOf(cursor);
    if (start > now) {
      return candidate;
    }
    if (start != NoTime) {
      candidate = start;
      if (lastRun < start) {
        return candidate;
      }
      if (m_Rule.Repeats() && now - start <= m_Rule.m_DurationSeconds + GraceSeconds) {
        return now - (now - start) % m_Rule.m_IntervalSeconds;
      }
      if (start > lastStart) {
        cursor = lastStart = start;
      }
    }
    if (cursor >= now || lastRun < candidate) {
      return candidate;
    }
  }
}

long SchedulerTrigger::WakeAfter(long now) const {
  if (!IsDated() || HasEnded(now)) {
    return Never;
  }
  const long periodAgo = now - m_Rule.m_DurationSeconds;
  long next = now < m_Rule.m_Begin ? NoTime : StartOnDayOf(periodAgo);
  if (next == NoTime || next < periodAgo) {
    next = StartOnDayOf(now);
  }
  if (m_Rule.Repeats() && now >= m_Rule.m_Begin && next != NoTime && next <= now) {
    const long repetition = RepetitionOf(next, now);
    next = repetition <= Add32(next, m_Rule.m_DurationSeconds) ? repetition : next;
  }
  return next > now ? next : Never;
}

long SchedulerTrigger::RepetitionOf(long start, long moment) const {
  const long interval = m_Rule.m_IntervalSeconds;
  return Add32(moment - (moment - start) % interval, interval);
}

long SchedulerTrigger::ChanceAfter(long now, long until) const {
  if (!IsDated() || HasEnded(now)) {
    return Never;
  }
  if (now < m_Rule.m_Begin) {
    return m_Rule.m_Begin;
  }
  const long start = StartAfter(now, until);
  return m_Rule.Repeats() ? std::min(start, RepetitionAfter(now)) : start;
}

// The next repetition of any start whose period is not over, or the end of that period: it may have
// stood for a later start until then.
long SchedulerTrigger::RepetitionAfter(long now) const {
  const long reach = m_Rule.m_DurationSeconds + GraceSeconds;
  long next = Never;
  for (long day = m_Calendar->DayOf(now - reach); day <= m_Calendar->DayOf(now); ++day) {
    const long start = StartOn(day);
    if (start == NoTime || start > now) {
      continue;
    }
    const long end = Add32(start, reach + 1);
    if (end > now) {
      next = std::min({next, end, RepetitionOf(start, now)});
    }
  }
  return next;
}

// A start stands for its next one as long as its period is not over, and nothing is slept for that
// it does not bring itself. Where only one period is under way all is regular: on the start's own
// day, and after midnight until the next start, if that day has one.
std::optional<RunSpan> SchedulerTrigger::RegularRepetitionsAfter(long run) const {
  if (!m_Rule.Repeats() || IsCoveredByOlderStart(run)) {
    return std::nullopt;
  }
  const long day = m_Calendar->DayOf(run);
  long start = StartOn(day);
  long last = m_Calendar->MomentOf(day + 1, 0);
  if (start == NoTime) {
    return std::nullopt;
  }
  if (start > run) {
    last = start - 1;
    start = StartOn(day - 1);
    const bool periodBeganThatDay =
        run - m_Rule.m_DurationSeconds >= m_Calendar->MomentOf(day - 1, 0);
    if (start == NoTime || !periodBeganThatDay || !m_Calendar->HasDay(day - 1)) {
      return std::nullopt;
    }
  }
  last = std::min(last, Add32(start, m_Rule.m_DurationSeconds));
  if (m_Rule.m_End != NoTime) {
    last = std::min(last, m_Rule.m_End);
  }
  const long first = RepetitionOf(start, run);
  if (first > last) {
    return std::nullopt;
  }
  return RunSpan{first, m_Rule.m_IntervalSeconds, last - (last - first) % m_Rule.m_IntervalSeconds};
}

// A start of an earlier day than that on which the latest one before `moment` lies.
bool SchedulerTrigger::IsCoveredByOlderStart(long moment) const {
  const long from = moment - m_Rule.m_DurationSeconds;
  long covering = 0;
  for (long day = m_Calendar->DayOf(from); day <= m_Calendar->DayOf(moment); ++day) {
    const long start = StartOn(day);
    covering += start != NoTime && start >= from && start <= moment ? 1 : 0;
  }
  return covering > 1;
}

}  // namespace NoxAgent
