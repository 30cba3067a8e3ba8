#pragma once

#include "agent/daemon/control/Caller.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Checks requests that read or change the jobs of tasks, before the handler of the jobs gets them.
/// [any thread]
struct JobBorder {
  /// Throws RequestError when the request is about a job and the caller may not use jobs, or the
  /// task's ID can be no task's. `extension` is that of task files, empty without any.
  static void Check(const Caller& caller, const Corvane::AgentInterfacesV3::AMsgIn& request,
                    const BaseSDK::AString& extension);
};

}  // namespace NoxAgent
