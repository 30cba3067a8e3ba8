#include "agent/document/TaskWriter.h"

#include "agent/document/AsciiDocument.h"

#include <BaseSDK/ADateTime.h>

#include <pugixml.hpp>

#include <sstream>

namespace NoxAgent {

namespace {

constexpr long SecondsOfMinute = 60;

void AddElement(pugi::xml_node& parent, const char* name, const std::string& text) {
  parent.append_child(name).text().set(text.c_str());
}

void AddNumber(pugi::xml_node& parent, const char* name, long number) {
  AddElement(parent, name, std::to_string(number));
}

void AddDate(pugi::xml_node& parent, const char* name, long moment) {
  if (moment != NoTime) {
    AddElement(parent, name, BaseSDK::ADateTime(moment).ToString("%Y/%m/%d %H:%M:%S").ToUtf8());
  }
}

void AddPeriod(pugi::xml_node& trigger, const TriggerRule& rule) {
  if (rule.m_IntervalSeconds != 0) {
    const bool isMinutes = rule.m_IntervalSeconds % SecondsOfMinute == 0;
    trigger.append_attribute("Interval") =
        std::to_string(isMinutes ? rule.m_IntervalSeconds / SecondsOfMinute
                                 : rule.m_IntervalSeconds)
            .c_str();
    if (!isMinutes) {
      trigger.append_attribute("IntervalUnit") = "SECOND";
    }
  }
  if (rule.m_DurationSeconds != 0) {
    trigger.append_attribute("Duration") =
        std::to_string(rule.m_DurationSeconds / SecondsOfMinute).c_str();
  }
  if (rule.m_KillAtEnd) {
    trigger.append_attribute("KillAtEnd") = "1";
  }
}

void AddDays(pugi::xml_node& trigger, const TriggerRule& rule) {
  switch (rule.m_Type) {
    case TriggerRule::Daily:
      return AddNumber(trigger, "DaysInterval", rule.m_DaysInterval);
    case TriggerRule::Weekly:
      AddNumber(trigger, "WeeksInterval", rule.m_WeeksInterval);
      return AddNumber(trigger, "DaysOfWeek", rule.m_DaysOfWeek);
    case TriggerRule::MonthlyByDate:
      AddNumber(trigger, "DaysOfMonth", rule.m_DaysOfMonth);
      return AddNumber(trigger, "MonthsOfYear", rule.m_MonthsOfYear);
    case TriggerRule::MonthlyByWeekday:
      AddNumber(trigger, "DaysOfWeek", rule.m_DaysOfWeek);
      AddNumber(trigger, "Week", rule.m_Week);
      return AddNumber(trigger, "MonthsOfYear", rule.m_MonthsOfYear);
    default:
      return;
  }
}

void AddTrigger(pugi::xml_node& schedule, const TriggerRule& rule, const std::string& description) {
  pugi::xml_node trigger = schedule.append_child("Trigger");
  trigger.append_attribute("Type") = std::to_string(rule.m_Type).c_str();
  AddPeriod(trigger, rule);
  if (!description.empty()) {
    trigger.append_attribute("Description") = description.c_str();
  }
  if (rule.m_Type != TriggerRule::AsSoonAsPossible) {
    AddDate(trigger, "BeginDate", rule.m_Begin);
    AddDate(trigger, "EndDate", rule.m_End);
    AddDays(trigger, rule);
  }
}

}  // namespace

std::string WriteTaskDocument(const NewTaskDocument& task) {
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("Task");
  root.append_attribute("Enabled") = task.m_Enabled ? "1" : "0";
  AddElement(root, "HandlerCLSID", task.m_HandlerClassId);
  pugi::xml_node schedule = root.append_child("Schedule");
  for (const TriggerRule& rule : task.m_Triggers) {
    AddTrigger(schedule, rule, task.m_Description);
  }
  std::ostringstream text;
  document.save(text, "\t", pugi::format_indent | pugi::format_no_declaration);
  return AsciiDocument(BaseSDK::AString::FromUtf8(text.str())).Text().ToUtf8();
}

}  // namespace NoxAgent
