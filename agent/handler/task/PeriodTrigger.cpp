#include "agent/handler/task/PeriodTrigger.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AText.h>

using BaseSDK::ADateTime;
using BaseSDK::Add32;
using BaseSDK::AString;
using BaseSDK::Mul32;

namespace NoxHandler {

namespace {

constexpr long DaySeconds = 86400;
// The scheduler grants a repetition at the period's very end so many seconds.
constexpr long GraceSeconds = 5;

}  // namespace

PeriodTrigger::PeriodTrigger(const AString& markup) : m_Doc(markup) {
  m_Begin = BeginDate();
  m_Duration = Mul32(Number("@Duration", 0), 60);
  m_Interval = Mul32(Number("@Interval", 0), UnitSeconds());
  m_Type = Number("@Type", 0);
}

bool PeriodTrigger::IsDated() const {
  const AString disabled = Text("@Disabled");
  const bool isDisabled = BaseSDK::AText::StrToBool(disabled) || disabled.EqualsNoCase("Y");
  return !isDisabled && m_Begin > 0 && m_Type <= 4 && m_Type != -1;
}

bool PeriodTrigger::Kills() const {
  return IsDated() && Number("@KillAtEnd", 0) != 0 && m_Duration > 0;
}

std::optional<long> PeriodTrigger::StartOfPeriod(long moment) const {
  const auto start = LastStart(moment, m_Duration / DaySeconds + 2);
  const bool within = start && moment - *start <= Add32(m_Duration, GraceSeconds);
  return within ? start : std::nullopt;
}

std::optional<long> PeriodTrigger::LastStart(long moment, long days) const {
  for (long back = 0; back <= days; ++back) {
    const auto start = StartDaysBefore(moment, back);
    if (start && *start <= moment) {
      return start;
    }
  }
  return std::nullopt;
}

long PeriodTrigger::LastDue(long start, long moment) const {
  return m_Interval > 0 ? start + (moment - start) / m_Interval * m_Interval : start;
}

std::optional<long> PeriodTrigger::End() const {
  const long end = ADateTime(Text("EndDate/text()")).GetTime();
  return end == 0 ? std::nullopt : std::optional(end);
}

AString PeriodTrigger::Text(const char* path) const {
  return m_Doc.SelectSingleNode(AString("/Trigger/") + path);
}

long PeriodTrigger::Number(const char* path, long fallback) const {
  const AString text = Text(path);
  return text.IsEmpty() ? fallback : text.ToLong();
}

long PeriodTrigger::AtLeastOne(const char* path) const {
  const long number = Number(path, 1);
  return number < 1 ? 1 : number;
}

bool PeriodTrigger::HasBit(const char* path, int bit) const {
  return ((static_cast<unsigned long>(Number(path, 0)) >> bit) & 1U) != 0;
}

long PeriodTrigger::UnitSeconds() const {
  const AString unit = Text("@IntervalUnit");
  return unit.EqualsNoCase("HOUR") ? 3600 : unit.EqualsNoCase("SECOND") ? 1 : 60;
}

long PeriodTrigger::BeginDate() const {
  const AString text = Text("BeginDate/text()");
  const long begin = ADateTime(text).GetTime();
  return begin != 0 ? begin : ADateTime(text, "%Y/%m/%d %H:%M:%S", 0).GetTime();
}

std::optional<long> PeriodTrigger::StartDaysBefore(long moment, long back) const {
  std::tm begin{};
  std::tm day{};
  if (localtime_r(&m_Begin, &begin) == nullptr || localtime_r(&moment, &day) == nullptr) {
    return std::nullopt;
  }
  day.tm_mday -= static_cast<int>(back);
  day.tm_hour = begin.tm_hour;
  day.tm_min = begin.tm_min;
  day.tm_sec = begin.tm_sec;
  day.tm_isdst = -1;
  const long start = BaseSDK::MakeTime32(day);
  if (start == -1 || start < m_Begin || !IsStartDay(start, begin, day)) {
    return std::nullopt;
  }
  return start;
}

bool PeriodTrigger::IsStartDay(long start, const std::tm& begin, const std::tm& day) const {
  const long days = (start - m_Begin) / DaySeconds;
  switch (m_Type) {
    case 0:
      return days == 0 && day.tm_mday == begin.tm_mday;
    case 1:
      return days % AtLeastOne("DaysInterval/text()") == 0;
    case 2:
      return (days + begin.tm_wday) / 7 % AtLeastOne("WeeksInterval/text()") == 0 &&
             HasBit("DaysOfWeek/text()", day.tm_wday);
    case 3:
      return HasBit("MonthsOfYear/text()", day.tm_mon) &&
             HasBit("DaysOfMonth/text()", day.tm_mday - 1);
    case 4:
      return HasBit("MonthsOfYear/text()", day.tm_mon) &&
             HasBit("DaysOfWeek/text()", day.tm_wday) && day.tm_mday / 7 + 1 == Week();
    default:
      return true;
  }
}

long PeriodTrigger::Week() const {
  const long week = Number("Week/text()", 1);
  return week < 1 || week > 5 ? 1 : week;
}

}  // namespace NoxHandler
