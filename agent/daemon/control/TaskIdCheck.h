// The border's look at the IDs of tasks.
#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Throws RequestError when no task may have this ID. `extension` is that of task files; when it is
/// empty, that is not looked at. [any thread]
void CheckTaskId(const BaseSDK::AString& taskId, const BaseSDK::AString& extension);

}  // namespace NoxAgent
