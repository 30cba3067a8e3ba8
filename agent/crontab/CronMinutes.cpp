#include "agent/crontab/CronMinutes.h"

#include "agent/schedule/TriggerRule.h"

#include <algorithm>

namespace NoxAgent {

namespace {

std::vector<long> ClocksOf(const CronExpression& expression) {
  std::vector<long> clocks;
  for (int hour = 0; hour < 24; ++hour) {
    for (int minute = 0; minute < 60 && HasBit(expression.Hours(), hour); ++minute) {
      if ((expression.Minutes() >> minute & 1) != 0) {
        clocks.push_back(hour * 3600L + minute * 60L);
      }
    }
  }
  return clocks;
}

}  // namespace

CronMinutes::CronMinutes(const CronExpression& expression, const LocalCalendar& calendar, long from,
                         long until)
    : m_Expression(expression),
      m_Calendar(calendar),
      m_Until(std::min(until, LocalCalendar::End())),
      m_Clocks(ClocksOf(expression)) {
  BeginStretch(from);
}

std::optional<long> CronMinutes::Next() {
  while (m_StretchBegin <= m_Until) {
    const long midnight = m_Day * LocalCalendar::SecondsPerDay - m_Offset;
    if (midnight >= m_StretchEnd) {
      BeginStretch(m_StretchEnd);
      continue;
    }
    if (m_NextClock < m_Clocks.size() && IsDayMatching()) {
      const long moment = midnight + m_Clocks[m_NextClock++];
      if (moment >= m_StretchBegin && moment < m_StretchEnd) {
        return moment;
      }
      continue;
    }
    ++m_Day;
    m_NextClock = 0;
  }
  return std::nullopt;
}

void CronMinutes::BeginStretch(long from) {
  m_StretchBegin = from;
  if (from > m_Until) {
    return;
  }
  const LocalCalendar::Change* const change = m_Calendar.ChangeAfter(from);
  m_StretchEnd = change == nullptr ? m_Until + 1 : std::min(m_Until + 1, change->m_Moment);
  m_Offset = m_Calendar.OffsetAt(from);
  m_Day = m_Calendar.DayOf(from);
  m_NextClock = 0;
}

bool CronMinutes::IsDayMatching() const {
  const LocalCalendar::Date date = m_Calendar.DateOf(m_Day);
  return m_Expression.MatchesDay(date.m_Day, date.m_Month + 1, date.m_Weekday);
}

}  // namespace NoxAgent
