#include "agent/document/TriggerCheck.h"

#include "agent/document/SkippedBegin.h"
#include "agent/schedule/LocalCalendar.h"

#include <BaseSDK/AString.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace NoxAgent {

namespace {

using Value = std::optional<SourceValue>;

// A trigger that was never run is due once its begin date has passed, whatever its masks say.
constexpr const char* OnlyAtBegin =
    "the trigger is due once, when its begin date has passed, and then never again";

std::string TypeText(long type) {
  return "type " + std::to_string(type);
}

void WarnUnused(const Value& value, long type, ProblemList& problems) {
  if (value) {
    problems.Warn(value->m_Place, value->m_Name + " has no part in a trigger of " + TypeText(type),
                  "nothing reads it", "remove it, or change the Type");
  }
}

// Writers often put this value down although it changes nothing, so it needs no warning.
bool IsIdle(const Value& value, long idle) {
  if (!value) {
    return true;
  }
  const long number = BaseSDK::AString::FromUtf8(value->m_Text).ToLong(10);
  return number == 0 || number == idle;
}

// Bits of the days that the month has, 29 February among them.
long DaysOf(int month) {
  constexpr std::array<int, 12> Days = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return TriggerFields::AllDaysOfMonth >> (31 - Days.at(static_cast<std::size_t>(month)));
}

// The days of DaysOfMonth that one of the months has.
long SelectedDaysOf(const TriggerFields& fields) {
  long days = 0;
  for (int month = 0; month < 12; ++month) {
    if (((fields.m_MonthsOfYear >> month) & 1) != 0) {
      days |= fields.m_DaysOfMonth & DaysOf(month);
    }
  }
  return days;
}

}  // namespace

TriggerCheck::TriggerCheck(const DocumentSource& source, const pugi::xml_node& trigger, long now,
                           ProblemList& problems)
    : m_Fields(ReadTriggerFields(source, trigger, problems)), m_Now(now) {
  FindReasons();
  CheckType(problems);
  CheckEnd(problems);
  CheckRepetition(problems);
  CheckUnused(problems);
  CheckMasks(problems);
  CheckBegin(problems);
}

TextPlace TriggerCheck::PlaceOr(const Value& value) const {
  return value ? value->m_Place : m_Fields.m_Place;
}

bool TriggerCheck::FiresOnDays() const {
  return m_Fields.m_Type != TriggerFields::AsSoonAsPossible &&
         m_Fields.m_Type <= TriggerFields::MonthlyByWeekday;
}

bool TriggerCheck::HasRuns() const {
  return !NeverFires() && FiresOnDays() && !SelectsNoDay() && m_Fields.m_IntervalSeconds >= 0 &&
         m_Fields.m_DurationSeconds >= 0 && m_Fields.m_Begin <= LocalCalendar::End();
}

bool TriggerCheck::SelectsNoDay() const {
  const TriggerFields& f = m_Fields;
  switch (f.m_Type) {
    case TriggerFields::Weekly:
      return f.m_DaysOfWeek == 0;
    case TriggerFields::MonthlyByDate:
      return SelectedDaysOf(f) == 0;
    case TriggerFields::MonthlyByWeekday:
      return f.m_DaysOfWeek == 0 || f.m_MonthsOfYear == 0;
    default:
      return false;
  }
}

void TriggerCheck::FindReasons() {
  const long type = m_Fields.m_Type;
  if (m_Fields.m_Disabled) {
    m_Reasons.push_back({m_Fields.m_Place, "the trigger is disabled", "remove Disabled", true});
  }
  if (type == 6 || type == 7) {
    m_Reasons.push_back({PlaceOr(m_Fields.m_TypeText),
                         TypeText(type) + " is for events and cannot be used in a document",
                         "use a type from -1 to 4", false});
  } else if (type > TriggerFields::MonthlyByWeekday) {
    m_Reasons.push_back({PlaceOr(m_Fields.m_TypeText), TypeText(type) + " is not known",
                         "use a type from -1 to 4", false});
  }
  if (FiresOnDays()) {
    FindReasonInDates();
  }
}

void TriggerCheck::FindReasonInDates() {
  const Value& begin = m_Fields.m_BeginText;
  if (m_Fields.m_Begin == -1) {
    m_Reasons.push_back({PlaceOr(begin),
                         begin ? "BeginDate " + Quoted(begin->m_Text) + " cannot be read"
                               : "the trigger has no BeginDate",
                         "write a BeginDate like 2030/12/31 08:00:00, from 1970 to January 2038",
                         false});
    return;
  }
  m_Ended = m_Fields.m_End != -1 && m_Now > std::max(m_Fields.m_End, m_Fields.m_Begin);
  if (m_Ended) {
    m_Reasons.push_back(
        {PlaceOr(m_Fields.m_EndText),
         "the trigger ended on " + LocalTime(std::max(m_Fields.m_End, m_Fields.m_Begin)),
         "write a later EndDate, or none", false});
  }
}

void TriggerCheck::ReportReasons(bool anotherFires, const std::string& taskEffect,
                                 ProblemList& problems) const {
  for (const Reason& reason : m_Reasons) {
    if (anotherFires && reason.m_OnPurpose) {
      continue;
    }
    problems.Add(anotherFires ? TaskDocumentSeverity::Warning : TaskDocumentSeverity::NeverRuns,
                 reason.m_Place, reason.m_Message,
                 "the trigger never fires" + (anotherFires ? "" : "; " + taskEffect),
                 reason.m_Mend);
  }
}

void TriggerCheck::CheckType(ProblemList& problems) const {
  if (m_Fields.m_Type < TriggerFields::AsSoonAsPossible) {
    problems.Warn(PlaceOr(m_Fields.m_TypeText), TypeText(m_Fields.m_Type) + " is not known",
                  "the trigger fires every day from its begin date on, like type 1",
                  "write 1 for every day, or -1 for as soon as possible");
  }
}

void TriggerCheck::CheckEnd(ProblemList& problems) const {
  if (!FiresOnDays() || m_Fields.m_Begin == -1 || m_Fields.m_End == -1) {
    return;
  }
  if (m_Fields.m_End > m_Fields.m_Begin) {
    return;
  }
  const bool earlier = m_Fields.m_End < m_Fields.m_Begin;
  problems.Warn(PlaceOr(m_Fields.m_EndText),
                std::string("EndDate is ") + (earlier ? "before" : "the same as") + " BeginDate",
                std::string(earlier ? "the end is moved up to the begin: " : "") +
                    "the trigger can be due in that one second only",
                "write an EndDate after the last start that is wanted, or none");
}

void TriggerCheck::CheckRepetition(ProblemList& problems) const {
  if (!FiresOnDays()) {
    return;
  }
  const long interval = m_Fields.m_IntervalSeconds;
  const long duration = m_Fields.m_DurationSeconds;
  const std::string once = "the trigger does not repeat";
  if (interval < 0) {
    problems.Warn(PlaceOr(m_Fields.m_IntervalText), "the Interval is negative",
                  "repetitions come late or not at all", "write how long a step of it takes");
  }
  if (duration < 0) {
    problems.Warn(PlaceOr(m_Fields.m_DurationText), "the Duration is negative", once,
                  "write for how many minutes after each start it repeats");
  }
  if (duration > 0 && interval == 0 && !m_Fields.m_KillAtEnd) {
    problems.Warn(PlaceOr(m_Fields.m_DurationText), "a Duration without an Interval", once,
                  "write an Interval, or KillAtEnd if the run is to be stopped then");
  }
  if (interval > 0 && duration == 0) {
    problems.Warn(PlaceOr(m_Fields.m_IntervalText), "an Interval without a Duration", once,
                  "write a Duration in minutes, or remove the Interval");
  }
  if (interval > duration && duration > 0) {
    problems.Warn(PlaceOr(m_Fields.m_IntervalText),
                  "the Interval of " + std::to_string(interval) +
                      " seconds is longer than the Duration of " + std::to_string(duration) +
                      " seconds",
                  once, "mind the units: a Duration is in minutes");
  }
}

void TriggerCheck::CheckUnused(ProblemList& problems) const {
  const TriggerFields& f = m_Fields;
  const long type = f.m_Type;
  if (type > TriggerFields::MonthlyByWeekday) {
    return;
  }
  const auto unused = [&](const Value& value, long idle, std::initializer_list<long> users) {
    if (std::find(users.begin(), users.end(), type) != users.end() || IsIdle(value, idle)) {
      return;
    }
    WarnUnused(value, type, problems);
  };
  unused(f.m_DaysIntervalText, 1, {TriggerFields::Daily});
  unused(f.m_WeeksIntervalText, 1, {TriggerFields::Weekly});
  unused(f.m_DaysOfWeekText, 0, {TriggerFields::Weekly, TriggerFields::MonthlyByWeekday});
  unused(f.m_DaysOfMonthText, 0, {TriggerFields::MonthlyByDate});
  unused(f.m_MonthsOfYearText, 0, {TriggerFields::MonthlyByDate, TriggerFields::MonthlyByWeekday});
  unused(f.m_WeekText, 1, {TriggerFields::MonthlyByWeekday});
  if (FiresOnDays()) {
    return;
  }
  WarnUnused(f.m_BeginText, type, problems);
  WarnUnused(f.m_EndText, type, problems);
  unused(f.m_IntervalText, 0, {});
  unused(f.m_DurationText, 0, {});
}

void TriggerCheck::CheckMasks(ProblemList& problems) const {
  const TriggerFields& f = m_Fields;
  const bool byDate = f.m_Type == TriggerFields::MonthlyByDate;
  const bool byWeekday = f.m_Type == TriggerFields::MonthlyByWeekday;
  const auto wanted = [&](const char* name, const Value& value, long mask, const char* all) {
    if (mask != 0) {
      return;
    }
    problems.Warn(PlaceOr(value), std::string(name) + " selects nothing", OnlyAtBegin,
                  std::string("write the sum of what is meant; ") + all + " is all of them");
  };
  if (f.m_Type == TriggerFields::Weekly || byWeekday) {
    wanted("DaysOfWeek", f.m_DaysOfWeekText, f.m_DaysOfWeek, "127");
  }
  if (byDate) {
    wanted("DaysOfMonth", f.m_DaysOfMonthText, f.m_DaysOfMonth, "2147483647");
  }
  if (byDate || byWeekday) {
    wanted("MonthsOfYear", f.m_MonthsOfYearText, f.m_MonthsOfYear, "4095");
  }
  if (byDate && f.m_DaysOfMonth != 0 && f.m_MonthsOfYear != 0) {
    CheckDaysInMonths(problems);
  }
}

void TriggerCheck::CheckDaysInMonths(ProblemList& problems) const {
  constexpr int February = 1;
  constexpr long Day29 = 1L << 28;
  long found = 0;
  bool outsideFebruary = false;
  for (int month = 0; month < 12; ++month) {
    if (((m_Fields.m_MonthsOfYear >> month) & 1) == 0) {
      continue;
    }
    const long days = m_Fields.m_DaysOfMonth & DaysOf(month);
    found |= days;
    outsideFebruary = outsideFebruary || (days != 0 && month != February);
  }
  if (found == 0) {
    problems.Warn(PlaceOr(m_Fields.m_DaysOfMonthText),
                  "none of the months in MonthsOfYear has a day of DaysOfMonth", OnlyAtBegin,
                  "choose days that the months have");
  } else if (found == Day29 && !outsideFebruary) {
    problems.Warn(PlaceOr(m_Fields.m_DaysOfMonthText), "only 29 February is selected",
                  "the trigger fires in leap years alone",
                  "add 28 February (134217728) if it is to fire every year");
  }
}

void TriggerCheck::CheckBegin(ProblemList& problems) const {
  if (!FiresOnDays() || m_Ended) {
    return;
  }
  if (const auto begin = FindSkippedBegin(m_Fields)) {
    problems.Warn(
        PlaceOr(m_Fields.m_BeginText),
        "there is no " + begin->m_Wanted + " in the local time zone: the clocks leave it out",
        "BeginDate is read as " + begin->m_Instead + ", and every start has that time of day",
        "choose a time of day that every day has");
  }
}

}  // namespace NoxAgent
