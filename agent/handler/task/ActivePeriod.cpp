#include "agent/handler/task/ActivePeriod.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AText.h>
#include <BaseSDK/AXmlDoc.h>

#include <ctime>
#include <tuple>

using BaseSDK::ADateTime;
using BaseSDK::Add32;
using BaseSDK::AString;
using BaseSDK::AXmlDoc;
using BaseSDK::Mul32;

namespace NoxHandler {

namespace {

constexpr long DaySeconds = 86400;
// The scheduler grants a repetition at the period's very end so many seconds.
constexpr long GraceSeconds = 5;

// A trigger's schedule as far as the start of its periods goes. The rules are the scheduler's, the
// one-off week numbers included: both must mean the same day.
class PeriodTrigger {
 public:
  explicit PeriodTrigger(const AString& markup) : m_Doc(markup) {
    m_Begin = BeginDate();
    m_Duration = Mul32(Number("@Duration", 0), 60);
    m_Interval = Mul32(Number("@Interval", 0), UnitSeconds());
    m_Type = Number("@Type", 0);
  }

  bool Kills() const {
    const AString disabled = Text("@Disabled");
    const bool isDisabled = BaseSDK::AText::StrToBool(disabled) || disabled.EqualsNoCase("Y");
    return !isDisabled && Number("@KillAtEnd", 0) != 0 && m_Duration > 0 && m_Begin > 0 &&
           m_Type <= 4 && m_Type != -1;
  }

  long Duration() const { return m_Duration; }

  // The last start at or before `moment` whose period still holds it.
  std::optional<long> StartOfPeriod(long moment) const {
    const long days = m_Duration / DaySeconds + 2;
    for (long back = 0; back <= days; ++back) {
      const auto start = StartDaysBefore(moment, back);
      if (start && *start <= moment) {
        const bool within = moment - *start <= Add32(m_Duration, GraceSeconds);
        return within ? start : std::nullopt;
      }
    }
    return std::nullopt;
  }

  // The last repetition at or before `moment` of the period that began at `start`.
  long LastDue(long start, long moment) const {
    return m_Interval > 0 ? start + (moment - start) / m_Interval * m_Interval : start;
  }

 private:
  AString Text(const char* path) const {
    return m_Doc.SelectSingleNode(AString("/Trigger/") + path);
  }
  long Number(const char* path, long fallback) const {
    const AString text = Text(path);
    return text.IsEmpty() ? fallback : text.ToLong();
  }
  long AtLeastOne(const char* path) const {
    const long number = Number(path, 1);
    return number < 1 ? 1 : number;
  }
  bool HasBit(const char* path, int bit) const {
    return ((static_cast<unsigned long>(Number(path, 0)) >> bit) & 1U) != 0;
  }
  long UnitSeconds() const {
    const AString unit = Text("@IntervalUnit");
    return unit.EqualsNoCase("HOUR") ? 3600 : unit.EqualsNoCase("SECOND") ? 1 : 60;
  }
  long BeginDate() const {
    const AString text = Text("BeginDate/text()");
    const long begin = ADateTime(text).GetTime();
    return begin != 0 ? begin : ADateTime(text, "%Y/%m/%d %H:%M:%S", 0).GetTime();
  }

  std::optional<long> StartDaysBefore(long moment, long back) const {
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

  bool IsStartDay(long start, const std::tm& begin, const std::tm& day) const {
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
  long Week() const {
    const long week = Number("Week/text()", 1);
    return week < 1 || week > 5 ? 1 : week;
  }

  AXmlDoc m_Doc;
  long m_Begin = 0;
  long m_Duration = 0;
  long m_Interval = 0;
  long m_Type = 0;
};

// What a trigger says of the run; the better candidate compares greater.
struct Candidate {
  long m_Due;
  long m_End;

  bool IsBetterThan(const Candidate& other) const {
    return std::tuple(m_Due, -m_End) > std::tuple(other.m_Due, -other.m_End);
  }
};

Candidate CandidateFor(const PeriodTrigger& trigger, long runStart) {
  if (const auto start = trigger.StartOfPeriod(runStart)) {
    return {trigger.LastDue(*start, runStart), Add32(*start, trigger.Duration())};
  }
  return {-1, Add32(runStart, trigger.Duration())};
}

}  // namespace

std::optional<long> ActivePeriod::EndFor(const AString& taskXml, long runStart) {
  AXmlDoc document(taskXml);
  std::optional<Candidate> best;
  if (!document.Find("//Trigger")) {
    return std::nullopt;
  }
  while (document.Read()) {
    const PeriodTrigger trigger(document.GetValue());
    if (!trigger.Kills()) {
      continue;
    }
    const Candidate candidate = CandidateFor(trigger, runStart);
    if (!best || candidate.IsBetterThan(*best)) {
      best = candidate;
    }
  }
  return best ? std::optional(best->m_End) : std::nullopt;
}

}  // namespace NoxHandler
