#pragma once

#include <AgentInterfacesV3/AMsgValue.h>
#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// What a task handler that runs jobs tells of them; beside INoxScheduledTaskHandler, through which
/// it is handed the tasks. [any thread]
class INoxCommandHandler : public virtual INoxObject {
 public:
  /// The task's latest run since the agent started, in `run`, which is replaced:
  ///
  ///   "state"             "running", "waiting" (to be started) or "ended"
  ///   "start", "end"      seconds since the epoch; absent when there is none or it is not known
  ///   "pid"               the command's process, while running
  ///   "result"            "Ok" or "Failed", when ended
  ///   "reason"            in words, when ended ("exit status 1 after 2.3 s") or waiting
  ///   "queued"            since when the task's next run waits for the end of this one, likewise
  ///   "skipped"           when a start was left out since the run began: the moment of the last
  ///   "skipReason"        one, in seconds since the epoch, and why
  ///
  /// 1; -1 and an empty map when no run is known. Old ended ones are forgotten.
  virtual long GetRun(const BaseSDK::AString& taskId, AStringMap& run) = 0;
  /// 1 when the task's job can be read and run, else -1 and why not.
  virtual long CheckJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) = 0;

  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxCommandHandler() = default;
};

}  // namespace Corvane::AgentInterfacesV3
