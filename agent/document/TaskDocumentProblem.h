#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// From harmless to fatal: the greatest of a document's problems says what becomes of the document.
enum class TaskDocumentSeverity {
  Warning,    ///< the task runs, but perhaps not as its writer thinks
  NeverRuns,  ///< the scheduler would take the task and then never run it, or delete it at once
  Error,      ///< the document cannot be accepted: too large, not well formed, or not a task
};

/// One thing that is wrong with a task document, said so that its writer can mend it.
struct TaskDocumentProblem {
  TaskDocumentSeverity m_Severity = TaskDocumentSeverity::Warning;
  /// Place of the element, attribute or character concerned, counted in characters from 1.
  unsigned m_Line = 1;
  unsigned m_Column = 1;
  BaseSDK::AString m_Message;  ///< what is wrong
  BaseSDK::AString m_Effect;   ///< what the scheduler makes of it
  BaseSDK::AString m_Mend;     ///< how to mend it
};

}  // namespace NoxAgent
