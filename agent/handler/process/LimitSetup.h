#pragma once

#include "agent/handler/job/ProcessLimits.h"

namespace NoxHandler {

/// Puts limits on the process that calls it, and so on all that it starts. Each routine does only
/// what a signal handler may do, does nothing when the limit is not set, and returns 0 or an errno.
struct LimitSetup {
  static int SetNice(const ProcessLimits& limits);
  static int SetIoPriority(const ProcessLimits& limits);
  static int SetMemory(const ProcessLimits& limits);
  /// SIGXCPU comes when the time is over, and SIGKILL some seconds of it later.
  static int SetCpuTime(const ProcessLimits& limits);
  static int SetFiles(const ProcessLimits& limits);
  static int SetOomScore(const ProcessLimits& limits);
};

}  // namespace NoxHandler
