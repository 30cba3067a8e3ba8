#include "agent/document/TriggerFields.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/AText.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace NoxAgent {

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace {

using Value = std::optional<SourceValue>;

constexpr long SecondsPerMinute = 60;
constexpr long SecondsPerHour = 3600;

bool IsOneOf(const AString& text, std::initializer_list<const char*> words) {
  return std::any_of(words.begin(), words.end(),
                     [&text](const char* word) { return text.EqualsNoCase(word); });
}

bool ReadDisabled(const Value& value, ProblemList& problems) {
  if (!value) {
    return false;
  }
  const AString text = AString::FromUtf8(value->m_Text);
  if (BaseSDK::AText::StrToBool(text) || text.EqualsNoCase("Y")) {
    return true;
  }
  if (!IsOneOf(text, {"", "0", "N", "no", "off", "false"})) {
    problems.Warn(value->m_Place, "Disabled " + Quoted(value->m_Text) + " says neither yes nor no",
                  "the trigger is not disabled", "write 1 or 0");
  }
  return false;
}

long UnitSeconds(const Value& unit, ProblemList& problems) {
  if (!unit) {
    return SecondsPerMinute;
  }
  const AString text = AString::FromUtf8(unit->m_Text);
  if (text.EqualsNoCase("HOUR")) {
    return SecondsPerHour;
  }
  if (text.EqualsNoCase("SECOND")) {
    return 1;
  }
  if (!IsOneOf(text, {"", "MINUTE"})) {
    problems.Warn(unit->m_Place, "IntervalUnit " + Quoted(unit->m_Text) + " is not known",
                  "the interval counts in minutes", "write SECOND, MINUTE or HOUR");
  }
  return SecondsPerMinute;
}

long ReadSeconds(const Value& value, long unitSeconds, ProblemList& problems) {
  const long number = CheckNumber(value, problems);
  const long seconds = BaseSDK::Mul32(number, unitSeconds);
  if (std::int64_t{number} * unitSeconds != seconds) {
    problems.Warn(value->m_Place, value->m_Name + " " + Quoted(value->m_Text) + " is too long",
                  "it is read as " + std::to_string(seconds) + " seconds",
                  "write at most " + std::to_string(BaseSDK::Long32Max / unitSeconds));
  }
  return seconds;
}

long ReadDate(const AString& text, bool withFallback) {
  long seconds = ADateTime(text).GetTime();
  if (seconds == 0 && withFallback) {
    seconds = ADateTime(text, "%Y/%m/%d %H:%M:%S", 0).GetTime();
  }
  return seconds == 0 ? -1 : seconds;
}

// The begin date is read in two forms, the end date in the first of them only.
long ReadEnd(const Value& value, ProblemList& problems) {
  if (!value) {
    return -1;
  }
  const long end = ReadDate(AString::FromUtf8(value->m_Text), false);
  if (end == -1) {
    problems.Warn(value->m_Place, "EndDate " + Quoted(value->m_Text) + " cannot be read",
                  "the trigger has no end",
                  "write it like 2030/12/31 08:00:00, all digits, from 1970 to January 2038");
  }
  return end;
}

// The mask's valid bits. `all` has all of them.
long ReadMask(const Value& value, long all, ProblemList& problems) {
  const long mask = CheckNumber(value, problems);
  if (mask >= 0 && mask <= all) {
    return mask;
  }
  problems.Warn(
      value->m_Place,
      value->m_Name + " " + std::to_string(mask) + " is outside 0 to " + std::to_string(all),
      "it selects the same as " + std::to_string(mask & all),
      "write the sum of the days or months that are meant");
  return mask & all;
}

// The number, or 1 where it is outside its range.
long ReadCount(const Value& value, long highest, ProblemList& problems) {
  const long number = CheckNumber(value, problems);
  if (!value || value->m_Text.empty() || (number >= 1 && number <= highest)) {
    return std::max(number, 1L);
  }
  const std::string range =
      highest == BaseSDK::Long32Max ? "below 1" : "outside 1 to " + std::to_string(highest);
  problems.Warn(value->m_Place, value->m_Name + " " + std::to_string(number) + " is " + range,
                "it counts as 1", "write 1 if that is meant");
  return 1;
}

void CheckAttributes(const DocumentSource& source, const pugi::xml_node& trigger,
                     ProblemList& problems) {
  static constexpr auto Known = {"Type",         "Disabled", "Description", "Interval",
                                 "IntervalUnit", "Duration", "KillAtEnd"};
  for (const pugi::xml_attribute& attribute : trigger.attributes()) {
    const std::string name = attribute.name();
    if (std::find(Known.begin(), Known.end(), name) == Known.end()) {
      WarnUnknown("attribute", name, source.PlaceOf(trigger, attribute), Known, "nothing reads it",
                  problems);
    }
  }
}

void CheckChild(const DocumentSource& source, const pugi::xml_node& child, ProblemList& problems) {
  static constexpr auto Known = {"BeginDate",  "EndDate",     "DaysInterval", "WeeksInterval",
                                 "DaysOfWeek", "DaysOfMonth", "MonthsOfYear", "Week"};
  const std::string name = child.name();
  const TextPlace place = source.PlaceOf(child);
  if (std::find(Known.begin(), Known.end(), name) == Known.end()) {
    const bool isTrigger = name == "Trigger";
    WarnUnknown("element", name, place, Known,
                isTrigger ? "it is read as a trigger of its own" : "nothing reads it", problems);
    return;
  }
  if (child.parent().child(name.c_str()) != child) {
    problems.Warn(place, "a second " + name, "only the first is read", "remove one of them");
  }
  CheckPlainText(source, child, problems);
}

void CheckStructure(const DocumentSource& source, const pugi::xml_node& trigger,
                    ProblemList& problems) {
  CheckAttributes(source, trigger, problems);
  for (const pugi::xml_node& child : trigger.children()) {
    if (child.type() == pugi::node_element) {
      CheckChild(source, child, problems);
    }
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      problems.Warn(source.PlaceOf(child), "text between the elements of a Trigger",
                    "nothing reads it", "remove it");
    }
  }
}

void ReadTexts(const DocumentSource& source, const pugi::xml_node& trigger, TriggerFields& fields) {
  fields.m_TypeText = AttributeValue(source, trigger, "Type");
  fields.m_IntervalText = AttributeValue(source, trigger, "Interval");
  fields.m_DurationText = AttributeValue(source, trigger, "Duration");
  fields.m_BeginText = ChildValue(source, trigger, "BeginDate");
  fields.m_EndText = ChildValue(source, trigger, "EndDate");
  fields.m_DaysIntervalText = ChildValue(source, trigger, "DaysInterval");
  fields.m_WeeksIntervalText = ChildValue(source, trigger, "WeeksInterval");
  fields.m_DaysOfWeekText = ChildValue(source, trigger, "DaysOfWeek");
  fields.m_DaysOfMonthText = ChildValue(source, trigger, "DaysOfMonth");
  fields.m_MonthsOfYearText = ChildValue(source, trigger, "MonthsOfYear");
  fields.m_WeekText = ChildValue(source, trigger, "Week");
}

}  // namespace

TriggerFields ReadTriggerFields(const DocumentSource& source, const pugi::xml_node& trigger,
                                ProblemList& problems) {
  TriggerFields fields;
  fields.m_Element = trigger;
  fields.m_Place = source.PlaceOf(trigger);
  CheckStructure(source, trigger, problems);
  ReadTexts(source, trigger, fields);

  fields.m_Disabled = ReadDisabled(AttributeValue(source, trigger, "Disabled"), problems);
  fields.m_Type = CheckNumber(fields.m_TypeText, problems, ", once");
  const long unit = UnitSeconds(AttributeValue(source, trigger, "IntervalUnit"), problems);
  fields.m_IntervalSeconds = ReadSeconds(fields.m_IntervalText, unit, problems);
  fields.m_DurationSeconds = ReadSeconds(fields.m_DurationText, SecondsPerMinute, problems);
  fields.m_KillAtEnd = CheckNumber(AttributeValue(source, trigger, "KillAtEnd"), problems,
                                   ", and the run is not stopped") != 0;
  if (fields.m_BeginText) {
    fields.m_Begin = ReadDate(AString::FromUtf8(fields.m_BeginText->m_Text), true);
  }
  fields.m_End = ReadEnd(fields.m_EndText, problems);
  fields.m_DaysInterval = ReadCount(fields.m_DaysIntervalText, BaseSDK::Long32Max, problems);
  fields.m_WeeksInterval = ReadCount(fields.m_WeeksIntervalText, BaseSDK::Long32Max, problems);
  fields.m_Week = ReadCount(fields.m_WeekText, 5, problems);
  fields.m_DaysOfWeek = ReadMask(fields.m_DaysOfWeekText, TriggerFields::AllDaysOfWeek, problems);
  fields.m_DaysOfMonth =
      ReadMask(fields.m_DaysOfMonthText, TriggerFields::AllDaysOfMonth, problems);
  fields.m_MonthsOfYear = ReadMask(fields.m_MonthsOfYearText, TriggerFields::AllMonths, problems);
  return fields;
}

bool CanFire(const TriggerFields& fields) {
  return !fields.m_Disabled && fields.m_Type <= TriggerFields::MonthlyByWeekday &&
         (fields.m_Type == TriggerFields::AsSoonAsPossible || fields.m_Begin != NoTime);
}

TriggerRule RuleOf(const TriggerFields& fields) {
  TriggerRule rule;
  rule.m_Type = fields.m_Type;
  rule.m_IntervalSeconds = fields.m_IntervalSeconds;
  rule.m_DurationSeconds = fields.m_DurationSeconds;
  rule.m_Begin = fields.m_Begin;
  rule.m_End = fields.m_End;
  rule.m_DaysInterval = fields.m_DaysInterval;
  rule.m_WeeksInterval = fields.m_WeeksInterval;
  rule.m_DaysOfWeek = fields.m_DaysOfWeek;
  rule.m_DaysOfMonth = fields.m_DaysOfMonth;
  rule.m_MonthsOfYear = fields.m_MonthsOfYear;
  rule.m_Week = fields.m_Week;
  rule.m_KillAtEnd = fields.m_KillAtEnd;
  return rule;
}

}  // namespace NoxAgent
