#pragma once

#include "agent/daemon/control/Caller.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Checks requests that are about the files of a task's job, before the job's handler gets them.
/// [any thread]
struct JobBorder {
  /// Throws RequestError when the request is not for this caller, or the task's ID can be no
  /// task's. `extension` is that of task files, empty without any.
  static void Check(const Caller& caller, const Corvane::AgentInterfacesV3::AMsgIn& request,
                    const BaseSDK::AString& extension);
};

}  // namespace NoxAgent
