#include "agent/schedule/LocalCalendar.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace NoxAgent {

namespace {

// Offsets from UTC are smaller than this.
constexpr long LargestOffset = 26 * 3600L;

long OffsetByLibrary(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)::localtime_r(&time, &fields);
  return fields.tm_gmtoff;
}

// Rounded down also before 1970.
long DayNumber(long seconds) {
  return seconds / LocalCalendar::SecondsPerDay -
         (seconds % LocalCalendar::SecondsPerDay < 0 ? 1 : 0);
}

LocalCalendar::Date MakeDate(long day) {
  const std::chrono::sys_days days{std::chrono::days(day)};
  const std::chrono::year_month_day date(days);
  const auto lastDay = (date.year() / date.month() / std::chrono::last).day();
  return {static_cast<std::int16_t>(int{date.year()}),
          static_cast<std::int8_t>(unsigned{date.month()} - 1),
          static_cast<std::int8_t>(unsigned{date.day()}),
          static_cast<std::int8_t>(std::chrono::weekday(days).c_encoding()),
          static_cast<std::int8_t>(unsigned{lastDay})};
}

}  // namespace

LocalCalendar::LocalCalendar(long from)
    : m_FirstDay(DayNumber(from)), m_FirstOffset(OffsetByLibrary(from)) {
  const long lastDay = DayNumber(BaseSDK::Long32Max);
  const auto days = static_cast<std::size_t>(lastDay - m_FirstDay + 1);
  m_ChangesBefore.reserve(days);
  m_Dates.reserve(days);
  long known = from;
  for (long day = m_FirstDay; day <= lastDay; ++day) {
    // One question a day: no zone sets its clocks there and back again in less.
    const long begin = std::max(from, day * SecondsPerDay);
    FindChanges(known, begin);
    known = begin;
    m_ChangesBefore.push_back(static_cast<std::uint16_t>(m_Changes.size()));
    m_Dates.push_back(MakeDate(day));
  }
}

void LocalCalendar::FindChanges(long from, long to) {
  long before = m_Changes.empty() ? m_FirstOffset : m_Changes.back().m_After;
  while (OffsetByLibrary(to) != before) {
    long same = from;
    long other = to;
    while (other - same > 1) {
      const long middle = same + (other - same) / 2;
      (OffsetByLibrary(middle) == before ? same : other) = middle;
    }
    const long after = OffsetByLibrary(other);
    m_Changes.push_back({other, before, after});
    before = after;
    from = other;
  }
}

std::size_t LocalCalendar::ChangesBeforeUtcDay(long utcDay) const {
  if (utcDay <= m_FirstDay) {
    return 0;
  }
  const auto index = static_cast<std::size_t>(utcDay - m_FirstDay);
  return index < m_ChangesBefore.size() ? m_ChangesBefore[index] : m_Changes.size();
}

long LocalCalendar::OffsetAt(long moment) const {
  std::size_t changes = ChangesBeforeUtcDay(DayNumber(moment));
  while (changes < m_Changes.size() && m_Changes[changes].m_Moment <= moment) {
    ++changes;
  }
  return changes == 0 ? m_FirstOffset : m_Changes[changes - 1].m_After;
}

long LocalCalendar::DayOf(long moment) const {
  return DayNumber(moment + OffsetAt(moment));
}

long LocalCalendar::ClockAt(long moment) const {
  const long shown = moment + OffsetAt(moment);
  return shown - DayNumber(shown) * SecondsPerDay;
}

LocalCalendar::Date LocalCalendar::DateOf(long day) const {
  const long index = day - m_FirstDay;
  const bool isHeld = index >= 0 && index < static_cast<long>(m_Dates.size());
  return isHeld ? m_Dates[static_cast<std::size_t>(index)] : MakeDate(day);
}

long LocalCalendar::MomentOf(long day, long clock) const {
  const long shown = day * SecondsPerDay + clock;
  // The period between two changes that is the first to end after the clock has shown this.
  std::size_t period = ChangesBeforeUtcDay(DayNumber(shown - LargestOffset));
  while (period < m_Changes.size() &&
         shown - m_Changes[period].m_Before >= m_Changes[period].m_Moment) {
    ++period;
  }
  if (period == 0) {
    return shown - m_FirstOffset;
  }
  const Change& change = m_Changes[period - 1];
  const long moment = shown - change.m_After;
  return moment >= change.m_Moment ? moment : shown - change.m_Before;
}

bool LocalCalendar::HasDay(long day) const {
  return DayOf(MomentOf(day, 0)) == day;
}

const LocalCalendar::Change* LocalCalendar::ChangeAfter(long moment) const {
  std::size_t changes = ChangesBeforeUtcDay(DayNumber(moment));
  while (changes < m_Changes.size() && m_Changes[changes].m_Moment <= moment) {
    ++changes;
  }
  return changes < m_Changes.size() ? &m_Changes[changes] : nullptr;
}

bool LocalCalendar::IsShownAgain(long moment) const {
  return MomentOf(DayOf(moment), ClockAt(moment)) != moment;
}

}  // namespace NoxAgent
