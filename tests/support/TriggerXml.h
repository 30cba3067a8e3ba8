#pragma once

#include <BaseSDK/AString.h>

#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Builds one Trigger element, readably:
///
///     TriggerXml::Daily("2005/03/01 08:00:00").EveryMinutes(30).ForMinutes(120)
///
/// Only what was said stands in the markup, so everything else keeps its default. Times are local.
class TriggerXml {
 public:
  static TriggerXml Asap();
  static TriggerXml Once(const std::string& begin);
  static TriggerXml Daily(const std::string& begin, long everyDays = 1);
  /// `days`: bit 0 is Sunday.
  static TriggerXml Weekly(const std::string& begin, long days, long everyWeeks = 1);
  /// `daysOfMonth`: bit 0 is the 1st; `months`: bit 0 is January.
  static TriggerXml MonthlyByDate(const std::string& begin, long daysOfMonth, long months = 4095);
  static TriggerXml MonthlyByWeekday(const std::string& begin, long week, long days,
                                     long months = 4095);
  explicit TriggerXml(long type);

  TriggerXml& End(const std::string& end);
  TriggerXml& EveryMinutes(long minutes);
  TriggerXml& EverySeconds(long seconds);
  TriggerXml& ForMinutes(long minutes);
  TriggerXml& KillAtEnd();
  TriggerXml& Disabled();
  TriggerXml& Description(const std::string& text);
  TriggerXml& Attribute(const std::string& name, const std::string& value);
  TriggerXml& Element(const std::string& name, const std::string& value);

  std::string Utf8() const;
  BaseSDK::AString Text() const { return BaseSDK::AString::FromUtf8(Utf8()); }

 private:
  using Pairs = std::vector<std::pair<std::string, std::string>>;
  Pairs m_Attributes;
  Pairs m_Elements;
};

}  // namespace TestSupport
