#include "agent/client/RuleWords.h"

#include "agent/client/LocalTime.h"
#include "agent/document/DocumentSource.h"
#include "agent/document/ProblemList.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AString.h>

#include <ctime>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

using Fields = TriggerFields;

constexpr long SecondsPerDay = 86400;
constexpr long LastWeek = 5;

constexpr const char* WeekdayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                        "Thursday", "Friday", "Saturday"};
// The week of a day is the day of the month divided by 7, plus 1: so week 1 has the days 1 to 6.
constexpr const char* WeekDays[] = {"1 to 6", "7 to 13", "14 to 20", "21 to 27", "28 to 31"};

std::string Formatted(long seconds, const char* format) {
  return BaseSDK::ADateTime(seconds).ToString(format).ToUtf8();
}

std::tm LocalFields(long seconds) {
  const std::time_t time = seconds;
  std::tm fields{};
  (void)::localtime_r(&time, &fields);
  return fields;
}

long NumberOf(const std::optional<SourceValue>& value) {
  return value ? AString::FromUtf8(value->m_Text).ToLong() : 0;
}

bool Has(long mask, int bit) {
  return ((mask >> bit) & 1) != 0;
}

std::string Ordinal(long number) {
  const long tens = number / 10 % 10;
  const char* const ending = tens == 1          ? "th"
                             : number % 10 == 1 ? "st"
                             : number % 10 == 2 ? "nd"
                             : number % 10 == 3 ? "rd"
                                                : "th";
  return std::to_string(number) + ending;
}

// "a", "a and b", "a, b and c"
std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == words.size() ? " and " : ", ") + words[i];
  }
  return text;
}

std::string Weekdays(long mask) {
  std::vector<std::string> names;
  for (int day = 0; day < 7; ++day) {
    if (Has(mask, day)) {
      names.emplace_back(WeekdayNames[day]);
    }
  }
  return names.empty() ? "no weekday at all" : names.size() == 7 ? "every weekday" : Joined(names);
}

std::string MonthDays(long mask) {
  std::vector<std::string> days;
  for (int day = 0; day < 31; ++day) {
    if (Has(mask, day)) {
      days.push_back(std::to_string(day + 1));
    }
  }
  if (days.empty()) {
    return "no day at all";
  }
  if (days.size() == 31) {
    return "every day";
  }
  return (days.size() == 1 ? "day " : "days ") + Joined(days);
}

std::string Months(long mask) {
  std::vector<std::string> names;
  for (int month = 0; month < 12; ++month) {
    if (Has(mask, month)) {
      names.emplace_back(MonthName(month));
    }
  }
  return names.empty() ? "no month at all" : names.size() == 12 ? "every month" : Joined(names);
}

std::string Length(long seconds) {
  const auto in = [seconds](long unit, const char* name) {
    const long count = seconds / unit;
    return std::to_string(count) + " " + name + (count == 1 ? "" : "s");
  };
  if (seconds % 3600 == 0) {
    return in(3600, "hour");
  }
  return seconds % 60 == 0 ? in(60, "minute") : in(1, "second");
}

}  // namespace

// A day as the rules look at it.
struct RuleWords::Day {
  long m_Moment;
  std::tm m_Fields;
  long m_Start;        // the begin's time of day on it
  long m_ElapsedDays;  // whole days of 86400 seconds from the begin to that, 0 just before it
};

RuleWords::RuleWords(const TriggerFields& trigger) : m_Trigger(trigger) {
  m_EveryDays = std::max(1L, NumberOf(trigger.m_DaysIntervalText));
  m_EveryWeeks = std::max(1L, NumberOf(trigger.m_WeeksIntervalText));
  const long week = NumberOf(trigger.m_WeekText);
  m_Week = week < 1 || week > LastWeek ? 1 : week;
}

bool RuleWords::CanFire() const {
  return NoxAgent::CanFire(m_Trigger);
}

bool RuleWords::IsDated() const {
  return CanFire() && m_Trigger.m_Type != Fields::AsSoonAsPossible;
}

std::string RuleWords::Rule() const {
  if (m_Trigger.m_Disabled) {
    return "never: the trigger is disabled";
  }
  if (m_Trigger.m_Type == Fields::AsSoonAsPossible) {
    return "as soon as possible, while the task has no finished run";
  }
  if (m_Trigger.m_Type > Fields::MonthlyByWeekday) {
    return "never: type " + std::to_string(m_Trigger.m_Type) + " is none that a document can have";
  }
  if (m_Trigger.m_Begin == -1) {
    return "never: it has no readable begin date";
  }
  return DayWords() + " at " + Formatted(m_Trigger.m_Begin, "%H:%M:%S") + RepetitionWords();
}

std::string RuleWords::DayWords() const {
  const std::string begin = Formatted(m_Trigger.m_Begin, "%Y-%m-%d");
  switch (m_Trigger.m_Type) {
    case Fields::Once:
      return "once, on " + begin;
    case Fields::Weekly: {
      const std::string days = "on " + Weekdays(m_Trigger.m_DaysOfWeek);
      if (m_EveryWeeks == 1) {
        return "weekly " + days;
      }
      const std::tm first = LocalFields(m_Trigger.m_Begin);
      const std::string sunday =
          Formatted(BaseSDK::Sub32(m_Trigger.m_Begin, first.tm_wday * SecondsPerDay), "%Y-%m-%d");
      return "weekly, every " + Ordinal(m_EveryWeeks) + " week counted from the week of " + sunday +
             ", " + days;
    }
    case Fields::MonthlyByDate:
      return "monthly on " + MonthDays(m_Trigger.m_DaysOfMonth) + " of " +
             Months(m_Trigger.m_MonthsOfYear);
    case Fields::MonthlyByWeekday:
      return "monthly on " + Weekdays(m_Trigger.m_DaysOfWeek) + " of week " +
             std::to_string(m_Week) + " (days " + WeekDays[m_Week - 1] + ") of " +
             Months(m_Trigger.m_MonthsOfYear);
    default:
      if (m_Trigger.m_Type != Fields::Daily || m_EveryDays == 1) {
        return "daily";
      }
      return "every " + Ordinal(m_EveryDays) + " day counted from " + begin;
  }
}

std::string RuleWords::RepetitionWords() const {
  const long interval = m_Trigger.m_IntervalSeconds, duration = m_Trigger.m_DurationSeconds;
  if (duration == 0) {
    return "";
  }
  if (interval == 0) {
    return ", with an active period of " + Length(duration);
  }
  if (interval < 0 || duration < 0) {
    return "";
  }
  const std::string length = Length(interval);
  const std::string each = length.starts_with("1 ") ? length.substr(2) : length;  // "every hour"
  return ", repeated every " + each + " for " + Length(duration);
}

std::string RuleWords::Span() const {
  if (!IsDated()) {
    return "";
  }
  const std::string begin = "It begins at " + LocalTimeText(m_Trigger.m_Begin);
  if (m_Trigger.m_End == -1) {
    return begin + " and has no end.";
  }
  return begin + " and ends at " + LocalTimeText(std::max(m_Trigger.m_End, m_Trigger.m_Begin)) +
         ".";
}

RuleWords::Day RuleWords::DayOf(long moment) const {
  const std::tm begin = LocalFields(m_Trigger.m_Begin);
  const std::tm fields = LocalFields(moment);
  std::tm start = fields;
  start.tm_hour = begin.tm_hour;
  start.tm_min = begin.tm_min;
  start.tm_sec = begin.tm_sec;
  start.tm_isdst = -1;
  const long seconds = BaseSDK::MakeTime32(start);
  return {moment, fields, seconds, BaseSDK::Sub32(seconds, m_Trigger.m_Begin) / SecondsPerDay};
}

long RuleWords::StartOnDayOf(long moment) const {
  return DayOf(moment).m_Start;
}

// The count of days is 0 on the day before the begin as well.
bool RuleWords::LiesBeforeBegin(const Day& day) const {
  return day.m_ElapsedDays < 0 || (day.m_ElapsedDays == 0 && day.m_Moment < m_Trigger.m_Begin &&
                                   day.m_Fields.tm_mday != LocalFields(m_Trigger.m_Begin).tm_mday);
}

std::vector<std::string> RuleWords::ReasonsAgainst(long moment) const {
  const Day day = DayOf(moment);
  if (day.m_Start == -1) {
    return {"its time of day is out of the clock's range"};
  }
  if (LiesBeforeBegin(day)) {
    return {"it lies before the begin"};
  }
  std::vector<std::string> reasons;
  AddCountReasons(day, reasons);
  AddMaskReasons(day, reasons);
  return reasons;
}

void RuleWords::AddCountReasons(const Day& day, std::vector<std::string>& reasons) const {
  const std::tm begin = LocalFields(m_Trigger.m_Begin);
  const std::string elapsed = std::to_string(day.m_ElapsedDays);
  if (m_Trigger.m_Type == Fields::Once &&
      (day.m_ElapsedDays != 0 || day.m_Fields.tm_mday != begin.tm_mday)) {
    reasons.emplace_back("it is not the day of the begin");
  }
  if (m_Trigger.m_Type == Fields::Daily && day.m_ElapsedDays % m_EveryDays != 0) {
    reasons.push_back("days elapsed since the begin: " + elapsed + ", no multiple of " +
                      std::to_string(m_EveryDays));
  }
  const long week = (day.m_ElapsedDays + begin.tm_wday) / 7;
  if (m_Trigger.m_Type == Fields::Weekly && week % m_EveryWeeks != 0) {
    reasons.push_back("weeks counted from that of the begin: " + std::to_string(week) +
                      ", no multiple of " + std::to_string(m_EveryWeeks));
  }
}

void RuleWords::AddMaskReasons(const Day& day, std::vector<std::string>& reasons) const {
  const long type = m_Trigger.m_Type;
  const bool byDate = type == Fields::MonthlyByDate, byWeekday = type == Fields::MonthlyByWeekday;
  if ((byDate || byWeekday) && !Has(m_Trigger.m_MonthsOfYear, day.m_Fields.tm_mon)) {
    reasons.push_back(std::string(MonthName(day.m_Fields.tm_mon)) + " is none of its months");
  }
  if (byDate && !Has(m_Trigger.m_DaysOfMonth, day.m_Fields.tm_mday - 1)) {
    reasons.push_back("day " + std::to_string(day.m_Fields.tm_mday) +
                      " is none of its days of the month");
  }
  if ((type == Fields::Weekly || byWeekday) && !Has(m_Trigger.m_DaysOfWeek, day.m_Fields.tm_wday)) {
    reasons.push_back(std::string(WeekdayNames[day.m_Fields.tm_wday]) + " is none of its weekdays");
  }
  const long week = day.m_Fields.tm_mday / 7 + 1;
  if (byWeekday && week != m_Week) {
    reasons.push_back("day " + std::to_string(day.m_Fields.tm_mday) + " lies in week " +
                      std::to_string(week) + " (days " + WeekDays[week - 1] + "), not in week " +
                      std::to_string(m_Week));
  }
}

std::string RuleWords::WhyNever(long moment) const {
  if (m_Trigger.m_Disabled) {
    return "is disabled";
  }
  if (!CanFire()) {
    return m_Trigger.m_Type > Fields::MonthlyByWeekday ? "has a type that never fires"
                                                       : "has no readable begin date";
  }
  if (!IsDated()) {
    return "runs a task once, as soon as possible";
  }
  if (m_Trigger.m_End != -1 && m_Trigger.m_End < moment) {
    return "ended at " + LocalTimeText(m_Trigger.m_End);
  }
  if (m_Trigger.m_Type == Fields::Once && m_Trigger.m_Begin < moment) {
    return "starts once, and that was at " + LocalTimeText(m_Trigger.m_Begin);
  }
  return WhyNoDay();
}

std::string RuleWords::WhyNoDay() const {
  // February with the day that most of its years lack.
  constexpr int DaysOfMonths[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const long type = m_Trigger.m_Type;
  const bool byDate = type == Fields::MonthlyByDate, byWeekday = type == Fields::MonthlyByWeekday;
  if ((type == Fields::Weekly || byWeekday) && m_Trigger.m_DaysOfWeek == 0) {
    return "names no weekday";
  }
  if (byDate && m_Trigger.m_DaysOfMonth == 0) {
    return "names no day of the month";
  }
  if ((byDate || byWeekday) && m_Trigger.m_MonthsOfYear == 0) {
    return "names no month";
  }
  if (!byDate) {
    return "";
  }
  for (int month = 0; month < 12; ++month) {
    const long days = TriggerFields::AllDaysOfMonth >> (31 - DaysOfMonths[month]);
    if (Has(m_Trigger.m_MonthsOfYear, month) && (m_Trigger.m_DaysOfMonth & days) != 0) {
      return "";
    }
  }
  return Months(m_Trigger.m_MonthsOfYear) + " never has " + MonthDays(m_Trigger.m_DaysOfMonth);
}

std::vector<RuleWords> ReadTriggers(const std::string& taskXml) {
  const DocumentSource source(taskXml);
  ProblemList ignored;  // `check` tells them
  std::vector<RuleWords> triggers;
  for (const auto& found : source.Document().select_nodes("//Trigger")) {
    triggers.emplace_back(ReadTriggerFields(source, found.node(), ignored));
  }
  return triggers;
}

std::string WhyNever(const std::vector<RuleWords>& triggers, long moment) {
  if (triggers.empty()) {
    return "it has no trigger";
  }
  std::string reasons;
  for (std::size_t i = 0; i < triggers.size(); ++i) {
    const std::string reason = triggers[i].WhyNever(moment);
    if (reason.empty()) {
      return "";
    }
    reasons += (i == 0 ? "trigger " : "; trigger ") + std::to_string(i + 1) + " " + reason;
  }
  return reasons;
}

}  // namespace NoxAgent
