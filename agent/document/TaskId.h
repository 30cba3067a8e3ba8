// Which IDs a task may have. An ID becomes a file name, and runs are reported by it.
#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>

namespace NoxAgent {

/// In characters.
constexpr std::size_t MaxTaskIdLength = 200;

/// Why no task may have this ID, as words that follow it, such as "is empty"; empty when one may.
/// `extension` is that of task files; when it is empty, that is not looked at. [any thread]
BaseSDK::AString FaultOfTaskId(const BaseSDK::AString& taskId, const BaseSDK::AString& extension);

}  // namespace NoxAgent
