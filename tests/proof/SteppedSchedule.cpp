#include "tests/proof/SteppedSchedule.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr long StepSeconds = 86400;

std::tm FieldsAt(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)localtime_r(&time, &fields);
  return fields;
}

bool IsSet(std::uint32_t mask, int bit) {
  return ((mask >> bit) & 1U) != 0;
}

}  // namespace

SteppedSchedule::SteppedSchedule(const CTaskTrigger& trigger)
    : m_Trigger(trigger), m_Begin(FieldsAt(trigger.m_BeginDate)) {}

long SteppedSchedule::StartOnDayOf(long moment) const {
  const std::tm day = FieldsAt(moment);
  if (!MasksSelect(day)) {
    return CTaskTrigger::NoTime;
  }
  std::tm fields = day;
  fields.tm_hour = m_Begin.tm_hour;
  fields.tm_min = m_Begin.tm_min;
  fields.tm_sec = m_Begin.tm_sec;
  fields.tm_isdst = -1;
  const long start = BaseSDK::MakeTime32(fields);
  const long days = BaseSDK::Sub32(start, m_Trigger.m_BeginDate) / StepSeconds;
  const bool isBeforeBegin =
      days == 0 && moment < m_Trigger.m_BeginDate && day.tm_mday != m_Begin.tm_mday;
  const bool isStart = start != CTaskTrigger::NoTime && days >= 0 && !isBeforeBegin;
  return isStart && CountSelects(days, day) ? start : CTaskTrigger::NoTime;
}

bool SteppedSchedule::MasksSelect(const std::tm& day) const {
  const bool isMonth = IsSet(m_Trigger.m_MonthsOfYear, day.tm_mon);
  const bool isWeekday = IsSet(m_Trigger.m_DaysOfWeek, day.tm_wday);
  switch (m_Trigger.m_Type) {
    case CTaskTrigger::Weekly:
      return isWeekday;
    case CTaskTrigger::MonthlyByDate:
      return isMonth && IsSet(m_Trigger.m_DaysOfMonth, day.tm_mday - 1);
    case CTaskTrigger::MonthlyByWeekday:
      return isMonth && isWeekday && m_Trigger.m_Week == day.tm_mday / 7 + 1;
    default:
      return true;
  }
}

bool SteppedSchedule::CountSelects(long days, const std::tm& day) const {
  switch (m_Trigger.m_Type) {
    case CTaskTrigger::Once:
      return days == 0 && day.tm_mday == m_Begin.tm_mday;
    case CTaskTrigger::Daily:
      return days % m_Trigger.m_DaysInterval == 0;
    case CTaskTrigger::Weekly:
      return (days + m_Begin.tm_wday) / 7 % m_Trigger.m_WeeksInterval == 0;
    default:
      return true;
  }
}

PlainSchedule::Answer SteppedSchedule::Ask(long now, long sleepSeconds) const {
  PlainSchedule::Answer answer;
  answer.sleepSeconds = sleepSeconds;
  long next = BaseSDK::Long32Min;
  if (now < m_Trigger.m_BeginDate) {
    const long start = StartOnDayOf(now);
    next = start == CTaskTrigger::NoTime ? next : start;
  } else if (m_Trigger.m_EndDate != CTaskTrigger::NoTime && now > m_Trigger.m_EndDate) {
    answer.expired = true;
  } else {
    const long lastRun = *m_Trigger.m_pLastRun;
    const long start = LatestStart(now);
    const bool isOpen = m_Trigger.m_Type != CTaskTrigger::Once ||
                        lastRun < BaseSDK::Add32(m_Trigger.m_BeginDate, m_Trigger.m_Duration);
    answer.due = start <= now && (lastRun == CTaskTrigger::NoTime || (lastRun < start && isOpen));
    answer.late = answer.due && BaseSDK::Sub32(now, start) > 59;
    next = NextStart(now);
  }
  if (next > now) {
    answer.sleepSeconds = std::min(sleepSeconds, BaseSDK::Sub32(next, now));
  }
  answer.nextRun =
      next < 1 || next <= now ? NextRun(BaseSDK::Add32(now, 60), answer.expired) : next;
  return answer;
}

long SteppedSchedule::LatestStart(long now) const {
  const long lastRun = *m_Trigger.m_pLastRun;
  const bool repeats = m_Trigger.m_Duration != 0 && m_Trigger.m_Interval != 0;
  long origin = lastRun;
  if (StartOnDayOf(lastRun) > now) {
    origin = StartOnDayOf(BaseSDK::Sub32(lastRun, m_Trigger.m_Duration));
  }
  long candidate = origin == CTaskTrigger::NoTime ? m_Trigger.m_BeginDate : origin;
  long last = BaseSDK::Long32Min;
  for (long cursor = candidate;; cursor = BaseSDK::Add32(cursor, StepSeconds)) {
    const long start = StartOnDayOf(cursor);
    if (start > now) {
      return candidate;
    }
    if (start != CTaskTrigger::NoTime) {
      candidate = start;
      if (lastRun == CTaskTrigger::NoTime || lastRun < start) {
        return candidate;
      }
      const long since = BaseSDK::Sub32(now, start);
      if (repeats && since <= BaseSDK::Add32(m_Trigger.m_Duration, 5)) {
        return BaseSDK::Add32(start,
                              BaseSDK::Mul32(since / m_Trigger.m_Interval, m_Trigger.m_Interval));
      }
      if (start > last) {
        cursor = last = start;
      }
    }
    if (cursor >= now || (lastRun != CTaskTrigger::NoTime && lastRun < candidate)) {
      return candidate;
    }
  }
}

long SteppedSchedule::NextStart(long now) const {
  const long periodAgo = BaseSDK::Sub32(now, m_Trigger.m_Duration);
  long next = StartOnDayOf(periodAgo);
  if (next == CTaskTrigger::NoTime || next < periodAgo) {
    next = StartOnDayOf(now);
  }
  if (m_Trigger.m_Duration == 0 || m_Trigger.m_Interval == 0 || next == CTaskTrigger::NoTime ||
      next > now) {
    return next;
  }
  const long count = BaseSDK::Add32(BaseSDK::Sub32(now, next) / m_Trigger.m_Interval, 1);
  const long repetition = BaseSDK::Add32(next, BaseSDK::Mul32(count, m_Trigger.m_Interval));
  return repetition <= BaseSDK::Add32(next, m_Trigger.m_Duration) ? repetition : next;
}

long SteppedSchedule::NextRun(long from, bool expired) const {
  const bool hasEnd = m_Trigger.m_EndDate != CTaskTrigger::NoTime;
  const bool isOver = from >= m_Trigger.m_BeginDate && m_Trigger.m_Type == CTaskTrigger::Once;
  if (expired || isOver || (hasEnd && from >= m_Trigger.m_EndDate)) {
    return CTaskTrigger::NoTime;
  }
  const long first = std::max(from, m_Trigger.m_BeginDate);
  const long limit = hasEnd ? m_Trigger.m_EndDate : BaseSDK::Add32(first, 7300 * StepSeconds);
  for (long cursor = first; cursor < limit; cursor = BaseSDK::Add32(cursor, StepSeconds)) {
    const long start = StartOnDayOf(cursor);
    if (start == from || (start != CTaskTrigger::NoTime && start > from)) {
      return start;
    }
  }
  return CTaskTrigger::NoTime;
}
