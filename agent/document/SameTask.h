#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Whether the documents say the same of a task, but for what the scheduler changes by itself: when
/// it records a run it writes the document anew, with another history and without what it does not
/// use (docs/task-document.md).
bool IsSameTask(const BaseSDK::AString& left, const BaseSDK::AString& right);

}  // namespace NoxAgent
