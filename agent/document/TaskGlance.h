#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// What a task's document says of the task as a whole, its schedule aside.
struct TaskGlance {
  bool m_Enabled = true;
  /// The run entry as it is written: the start of the last run in local time and the run's state,
  /// such as "2026-11-21 08:00:00 Ok". Empty when there is none.
  BaseSDK::AString m_RunTime;
};

/// A text that cannot be read as a document says nothing: the defaults.
TaskGlance GlanceAt(const BaseSDK::AString& document);

/// The document as the scheduler writes it anew when it enables the task. What it would drop is
/// missing here too (docs/task-document.md).
BaseSDK::AString EnabledDocument(const BaseSDK::AString& document);

}  // namespace NoxAgent
