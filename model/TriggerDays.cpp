#include "model/TriggerDays.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>

namespace Nox {
namespace {

constexpr std::uint32_t EveryWeekday = 0x7F;
constexpr int ShortestMonth = 28;
constexpr int NoMonth = std::numeric_limits<int>::max();

/// A month, counted from January 1970, and the day in it; both from 0, as the masks count.
struct Date {
  int m_Month;
  int m_Day;
};

Date DateOf(long day) {
  const std::chrono::year_month_day date{std::chrono::local_days(std::chrono::days(day))};
  return {(int{date.year()} - 1970) * 12 + static_cast<int>(unsigned{date.month()}) - 1,
          static_cast<int>(unsigned{date.day()}) - 1};
}

/// Months and days of the signed 32-bit range, and of the decades behind it that a search looks at,
/// are not negative when they count from 1901. Every fourth year is a leap year there.
constexpr unsigned YearsTo1970 = 69;
constexpr unsigned DaysTo1970 = YearsTo1970 * 365 + YearsTo1970 / 4;

unsigned MonthsSince1901(int month) {
  return static_cast<unsigned>(month) + 12 * YearsTo1970;
}

/// The first day of a month counted from January 1970.
long FirstDayOf(int month) {
  constexpr std::array<unsigned, 12> DaysBefore = {0,   31,  59,  90,  120, 151,
                                                   181, 212, 243, 273, 304, 334};
  constexpr unsigned March = 2;
  const unsigned months = MonthsSince1901(month);
  const unsigned year = months / 12;
  const bool isPastLeapDay = year % 4 == 3 && months % 12 >= March;
  const unsigned day = year * 365 + year / 4 + DaysBefore[months % 12] + (isPastLeapDay ? 1 : 0);
  return static_cast<long>(day) - static_cast<long>(DaysTo1970);
}

int MonthOfYear(int month) {
  return static_cast<int>(MonthsSince1901(month) % 12);
}

/// The first month at or after `month` that the mask of the months has; NoMonth without any.
int NextMonth(std::uint32_t monthsOfYear, int month) {
  const std::uint32_t year = monthsOfYear & 0xFFF;
  const std::uint32_t fromHere = (year | year << 12) >> MonthOfYear(month);
  return fromHere == 0 ? NoMonth : month + std::countr_zero(fromHere);
}

/// 0 is Sunday.
int WeekdayOf(long day) {
  constexpr unsigned FirstWeekday = 2;  // 1901-01-01 was a Tuesday
  return static_cast<int>((static_cast<unsigned>(day) + DaysTo1970 + FirstWeekday) % 7);
}

bool HasBit(std::uint32_t mask, int bit) {
  return ((mask >> bit) & 1U) != 0;
}

/// The days of a month, as a mask, that are in a week and on one of the weekdays. Those after the
/// month's end are among them.
///
/// Kept on purpose: the 7th already belongs to the second week, and the fifth starts on the 28th.
std::uint32_t DaysOfWeek(long week, std::uint32_t weekdays, int firstWeekday) {
  const std::uint64_t inWeek = (std::uint64_t{EveryWeekday} << (7 * week)) >> 8;
  const std::uint32_t wanted = weekdays & EveryWeekday;
  const std::uint32_t fromFirst = ((wanted | wanted << 7) >> firstWeekday) & EveryWeekday;
  const std::uint32_t inMonth =
      fromFirst | fromFirst << 7 | fromFirst << 14 | fromFirst << 21 | fromFirst << 28;
  return inMonth & static_cast<std::uint32_t>(inWeek);
}

/// The first multiple at or after `number`; 0 before 0. `divisor` is 0 only in a trigger that was
/// disabled before its counts were read: as if it were 1.
long NextMultiple(long number, long divisor) {
  const long step = std::max(divisor, 1L);
  return number <= 0 ? 0 : Mul32((number - 1) / step + 1, step);
}

bool IsMultiple(long number, long divisor) {
  return number % std::max(divisor, 1L) == 0;
}

}  // namespace

TriggerDays::TriggerDays(const CTaskTrigger& trigger)
    : m_Trigger(trigger),
      m_Zone(LocalZone::InForce()),
      m_Begin(m_Zone.LocalTimeAt(trigger.m_BeginDate)),
      m_KnownDay{trigger.m_BeginDate, m_Begin.m_Day} {}

long TriggerDays::StartOnDayOf(long moment) {
  if (m_Trigger.m_Type == CTaskTrigger::AsSoonAsPossible) {
    return moment;
  }
  const long day = DayOf(moment);
  const bool isBeforeBegin = moment < m_Trigger.m_BeginDate;
  Answer& answer = m_Answers[static_cast<std::size_t>(day & 1)];
  if (day != answer.m_Day || isBeforeBegin != answer.m_IsBeforeBegin) {
    answer = {day, isBeforeBegin, StartOn(day, isBeforeBegin)};
  }
  return answer.m_Start;
}

long TriggerDays::StartOn(long day, bool isBeforeBegin) {
  if (!MasksSelect(day)) {
    return CTaskTrigger::NoTime;
  }
  const long start = m_Zone.MomentOf({day, m_Begin.m_Second});
  if (start == CTaskTrigger::NoTime) {
    return CTaskTrigger::NoTime;
  }
  const long days = Sub32(start, m_Trigger.m_BeginDate) / SecondsPerDay;
  if (days < 0) {
    return CTaskTrigger::NoTime;
  }
  // Less than a day before the begin counts as no day: only the begin's own day may start then.
  if (days == 0 && isBeforeBegin && day != m_Begin.m_Day) {
    return CTaskTrigger::NoTime;
  }
  return CountSelects(days, day) ? start : CTaskTrigger::NoTime;
}

/// Whether the calendar alone lets the day pass.
bool TriggerDays::MasksSelect(long day) {
  if (m_Trigger.m_Type == CTaskTrigger::Weekly) {
    return HasBit(m_Trigger.m_DaysOfWeek, WeekdayOf(day));
  }
  const bool isMonthly = m_Trigger.m_Type == CTaskTrigger::MonthlyByDate ||
                         m_Trigger.m_Type == CTaskTrigger::MonthlyByWeekday;
  return !isMonthly || MonthSelects(day);
}

/// Asked from where a step from the day asks too, so that it is found once for both.
bool TriggerDays::MonthSelects(long day) {
  long selected = NextSelectedDay(day - m_Zone.MostDrift());
  while (selected < day) {
    selected = NextSelectedDay(selected + 1);
  }
  return selected == day;
}

/// The days that a monthly rule selects in a month, as a mask. Those after the month's end may be
/// among them.
std::uint32_t TriggerDays::SelectedDays(int month, long firstDay) const {
  if (!HasBit(m_Trigger.m_MonthsOfYear, MonthOfYear(month))) {
    return 0;
  }
  return m_Trigger.m_Type == CTaskTrigger::MonthlyByDate
             ? m_Trigger.m_DaysOfMonth
             : DaysOfWeek(m_Trigger.m_Week, m_Trigger.m_DaysOfWeek, WeekdayOf(firstDay));
}

/// Whether the distance from the begin, in elapsed days, lets the day pass.
bool TriggerDays::CountSelects(long days, long day) const {
  switch (m_Trigger.m_Type) {
    case CTaskTrigger::Once:
      return days == 0 && day == m_Begin.m_Day;
    case CTaskTrigger::Daily:
      return IsMultiple(days, m_Trigger.m_DaysInterval);
    case CTaskTrigger::Weekly:
      return IsMultiple((days + WeekdayOf(m_Begin.m_Day)) / 7, m_Trigger.m_WeeksInterval);
    default:
      return true;
  }
}

long TriggerDays::StepOn(long cursor, long until) {
  constexpr long MostSteps = Long32Max / SecondsPerDay;
  const long day = DayOf(cursor);
  const long drift = m_Zone.MostDrift();
  const long steps = Sub32(NextSelectedDay(day - drift), day + drift);
  if (steps <= 1) {
    return Add32(cursor, SecondsPerDay);
  }
  const long stepsUntil = (std::max(Sub32(until, cursor), 1L) - 1) / SecondsPerDay + 1;
  return Add32(cursor, std::min({steps, stepsUntil, MostSteps}) * SecondsPerDay);
}

bool TriggerDays::SelectsNothingFrom(long moment) {
  return NextSelectedDay(DayOf(moment) - m_Zone.MostDrift()) == NoDay;
}

long TriggerDays::EndOfDay(long moment) const {
  return Add32(moment, SecondsPerDay - m_Zone.LocalTimeAt(moment).m_Second);
}

long TriggerDays::FindSelectedDay(long day) const {
  // CountSelects counts elapsed days, which the clock's changes keep from being the calendar's, and
  // which end with the 32-bit range: from there on the count stands still.
  constexpr long MostCount = Long32Max / SecondsPerDay;
  const long drift = m_Zone.MostDrift();
  const long count = std::max(day - m_Begin.m_Day - drift, 0L);
  const auto atCount = [&](long days) {
    return std::max(day, m_Begin.m_Day + std::min(days, MostCount) - drift);
  };
  switch (m_Trigger.m_Type) {
    case CTaskTrigger::Once:
      return day <= m_Begin.m_Day ? m_Begin.m_Day : NoDay;
    case CTaskTrigger::Daily:
      return atCount(NextMultiple(count, m_Trigger.m_DaysInterval));
    case CTaskTrigger::Weekly: {
      const long weekday = WeekdayOf(m_Begin.m_Day);
      const long week = (count + weekday) / 7;
      const long next = NextMultiple(week, m_Trigger.m_WeeksInterval);
      const bool hasWeekday = (m_Trigger.m_DaysOfWeek & EveryWeekday) != 0;
      return !hasWeekday ? NoDay : next == week ? day : atCount(Sub32(Mul32(next, 7), weekday));
    }
    case CTaskTrigger::MonthlyByDate:
    case CTaskTrigger::MonthlyByWeekday:
      return NextDayOfMonth(day);
    default:
      return day;
  }
}

/// The first day at or after `day` that a monthly rule selects; NoDay when there is none.
long TriggerDays::NextDayOfMonth(long day) const {
  // In the 32-bit range every fourth year is a leap year, so after 28 years the calendar begins
  // anew. Without weekdays it does so after four.
  const int cycle = m_Trigger.m_Type == CTaskTrigger::MonthlyByDate ? 4 * 12 : 28 * 12;
  const Date from = DateOf(day);
  for (int month = NextMonth(m_Trigger.m_MonthsOfYear, from.m_Month); month <= from.m_Month + cycle;
       month = NextMonth(m_Trigger.m_MonthsOfYear, month + 1)) {
    const long firstDay = FirstDayOf(month);
    const std::uint32_t passed = month == from.m_Month ? (1U << from.m_Day) - 1 : 0;
    const int selected = std::countr_zero(SelectedDays(month, firstDay) & ~passed);
    if (selected < ShortestMonth || firstDay + selected < FirstDayOf(month + 1)) {
      return firstDay + selected;
    }
  }
  return NoDay;
}

}  // namespace Nox
