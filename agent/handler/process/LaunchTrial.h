#pragma once

#include "agent/handler/job/Job.h"

namespace NoxHandler {

/// Finds out whether a job could be started on this machine as it is now, without starting it.
struct LaunchTrial {
  /// Throws JobError that names file, line and key when there is no such user, program or
  /// directory, or when the agent may not use it. What only the job's own user may look at passes,
  /// because the agent cannot tell. [any thread]
  static void Check(const Job& job);
};

}  // namespace NoxHandler
