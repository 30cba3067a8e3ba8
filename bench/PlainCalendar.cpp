#include "bench/PlainCalendar.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <ctime>

namespace PlainCalendar {
namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr long SecondsPerDay = 86400;
constexpr int YearsAhead = 20;

long AskForOffset(long moment) {
  const std::time_t asked = moment;
  std::tm shown{};
  localtime_r(&asked, &shown);
  return shown.tm_gmtoff;
}

long DayNumber(const sys_days& date) {
  return static_cast<long>(date.time_since_epoch().count());
}

long NextOnDaysOfWeek(const OffsetTable& offsets, unsigned daysOfWeek, long second, long from) {
  constexpr long ThursdayOfTheEpoch = 4;
  const long today = (from + offsets.OffsetAt(from)) / SecondsPerDay;
  for (long date = today; date <= today + 7; ++date) {
    if ((daysOfWeek >> ((date + ThursdayOfTheEpoch) % 7) & 1) == 0) {
      continue;
    }
    const long moment = offsets.MomentOf(date, second);
    if (moment >= from) {
      return moment;
    }
  }
  return Never;
}

/// The rule's day in a month; Never when the month has none.
long DayInMonth(const Rule& rule, year inYear, month inMonth) {
  if (rule.m_Kind == Rule::OnFirstWeekday) {
    const sys_days first = inYear / inMonth / weekday(rule.m_Days)[1];
    const bool isSeventh = first == sys_days(inYear / inMonth / day(7));
    return isSeventh ? Never : DayNumber(first);
  }
  const year_month_day date = inYear / inMonth / day(rule.m_Days);
  return date.ok() ? DayNumber(date) : Never;
}

long NextInMonths(const OffsetTable& offsets, const Rule& rule, long second, long from) {
  const long today = (from + offsets.OffsetAt(from)) / SecondsPerDay;
  const year thisYear = year_month_day(sys_days(std::chrono::days(today))).year();
  for (int ahead = 0; ahead <= YearsAhead; ++ahead) {
    const year inYear = thisYear + std::chrono::years(ahead);
    for (unsigned months = rule.m_MonthsOfYear; months != 0; months &= months - 1) {
      const month inMonth(static_cast<unsigned>(std::countr_zero(months)) + 1);
      const long date = DayInMonth(rule, inYear, inMonth);
      if (date < today) {
        continue;
      }
      const long moment = offsets.MomentOf(date, second);
      if (moment >= from) {
        return moment;
      }
    }
  }
  return Never;
}

}  // namespace

OffsetTable::OffsetTable() {
  constexpr long Begin = 946684800;
  constexpr long End = 2145916800;
  m_Spans.push_back({Begin, AskForOffset(Begin)});
  for (long moment = Begin; moment < End; moment += SecondsPerDay) {
    if (AskForOffset(moment + SecondsPerDay) == m_Spans.back().m_Offset) {
      continue;
    }
    long before = moment;
    long after = moment + SecondsPerDay;
    while (after - before > 1) {
      const long middle = before + (after - before) / 2;
      (AskForOffset(middle) == m_Spans.back().m_Offset ? before : after) = middle;
    }
    m_Spans.push_back({after, AskForOffset(after)});
  }
}

long OffsetTable::OffsetAt(long moment) const {
  const auto next =
      std::upper_bound(m_Spans.begin() + 1, m_Spans.end(), moment,
                       [](long wanted, const Span& span) { return wanted < span.m_Begin; });
  return std::prev(next)->m_Offset;
}

long OffsetTable::MomentOf(long day, long second) const {
  const long shown = day * SecondsPerDay + second;
  return shown - OffsetAt(shown - OffsetAt(shown));
}

long NextRun(const OffsetTable& offsets, const Rule& rule, long second, long from) {
  return rule.m_Kind == Rule::OnDaysOfWeek ? NextOnDaysOfWeek(offsets, rule.m_Days, second, from)
                                           : NextInMonths(offsets, rule, second, from);
}

}  // namespace PlainCalendar
