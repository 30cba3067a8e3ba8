#pragma once

#include "tests/support/TriggerXml.h"

#include <BaseSDK/AString.h>

#include <optional>
#include <string>

namespace TestSupport {

/// Builds a task document:
///
///     TaskXml().With(TriggerXml::Asap()).Text()
///
/// Its handler is TaskXml::HandlerId unless another one is given; it has neither an Enabled
/// attribute nor a history unless told to.
class TaskXml {
 public:
  /// The class identifier that TestScheduler's handler is known by.
  static constexpr const char* HandlerId = "{00000000-0000-0000-0000-0000000000A1}";

  TaskXml& With(const TriggerXml& trigger);
  TaskXml& Handler(const std::string& classId);
  TaskXml& Enabled(bool enabled);
  /// The text of RunTime, such as "2005-03-01 08:00:00 Ok".
  TaskXml& LastRun(const std::string& entry);

  std::string Utf8() const;
  BaseSDK::AString Text() const { return BaseSDK::AString::FromUtf8(Utf8()); }

 private:
  std::optional<bool> m_Enabled;
  std::string m_Handler = HandlerId;
  std::string m_Triggers;
  std::optional<std::string> m_LastRun;
};

}  // namespace TestSupport
