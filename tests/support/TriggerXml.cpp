#include "tests/support/TriggerXml.h"

namespace TestSupport {

TriggerXml::TriggerXml(long type) {
  Attribute("Type", std::to_string(type));
}

TriggerXml TriggerXml::Asap() {
  return TriggerXml(-1);
}

TriggerXml TriggerXml::Once(const std::string& begin) {
  return TriggerXml(0).Element("BeginDate", begin);
}

TriggerXml TriggerXml::Daily(const std::string& begin, long everyDays) {
  return TriggerXml(1)
      .Element("BeginDate", begin)
      .Element("DaysInterval", std::to_string(everyDays));
}

TriggerXml TriggerXml::Weekly(const std::string& begin, long days, long everyWeeks) {
  return TriggerXml(2)
      .Element("BeginDate", begin)
      .Element("WeeksInterval", std::to_string(everyWeeks))
      .Element("DaysOfWeek", std::to_string(days));
}

TriggerXml TriggerXml::MonthlyByDate(const std::string& begin, long daysOfMonth, long months) {
  return TriggerXml(3)
      .Element("BeginDate", begin)
      .Element("DaysOfMonth", std::to_string(daysOfMonth))
      .Element("MonthsOfYear", std::to_string(months));
}

TriggerXml TriggerXml::MonthlyByWeekday(const std::string& begin, long week, long days,
                                        long months) {
  return TriggerXml(4)
      .Element("BeginDate", begin)
      .Element("DaysOfWeek", std::to_string(days))
      .Element("MonthsOfYear", std::to_string(months))
      .Element("Week", std::to_string(week));
}

TriggerXml& TriggerXml::End(const std::string& end) {
  return Element("EndDate", end);
}

TriggerXml& TriggerXml::EveryMinutes(long minutes) {
  return Attribute("Interval", std::to_string(minutes));
}

TriggerXml& TriggerXml::EverySeconds(long seconds) {
  return Attribute("Interval", std::to_string(seconds)).Attribute("IntervalUnit", "SECOND");
}

TriggerXml& TriggerXml::ForMinutes(long minutes) {
  return Attribute("Duration", std::to_string(minutes));
}

TriggerXml& TriggerXml::KillAtEnd() {
  return Attribute("KillAtEnd", "1");
}

TriggerXml& TriggerXml::Disabled() {
  return Attribute("Disabled", "Y");
}

TriggerXml& TriggerXml::Description(const std::string& text) {
  return Attribute("Description", text);
}

TriggerXml& TriggerXml::Attribute(const std::string& name, const std::string& value) {
  m_Attributes.emplace_back(name, value);
  return *this;
}

TriggerXml& TriggerXml::Element(const std::string& name, const std::string& value) {
  m_Elements.emplace_back(name, value);
  return *this;
}

std::string TriggerXml::Utf8() const {
  std::string text = "<Trigger";
  for (const auto& [name, value] : m_Attributes) {
    text += ' ' + name + "=\"" + value + '"';
  }
  text += '>';
  for (const auto& [name, value] : m_Elements) {
    text += '<' + name + '>' + value + "</" + name + '>';
  }
  return text + "</Trigger>";
}

}  // namespace TestSupport
