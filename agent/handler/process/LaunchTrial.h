#pragma once

#include "agent/handler/job/Job.h"

namespace NoxHandler {

/// Whether a job could be started as things stand: what a run would find out, found without one.
struct LaunchTrial {
  /// Throws JobError that names file, line and key: there is no such user, program or directory, or
  /// the agent may not use it. What only the job's user may see passes, for the agent cannot tell.
  /// [any thread]
  static void Check(const Job& job);
};

}  // namespace NoxHandler
