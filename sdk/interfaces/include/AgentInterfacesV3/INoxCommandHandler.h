#pragma once

#include <AgentInterfacesV3/AMsgValue.h>
#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// A task handler that runs jobs tells of them through this interface. It serves
/// INoxScheduledTaskHandler as well, through which it is handed the tasks. [any thread]
class INoxCommandHandler : public virtual INoxObject {
 public:
  /// The task's latest run since the agent started, or an earlier one that failed for good, in
  /// `run`, which is replaced:
  ///
  ///   "state"             "running", "waiting" (to be started), "ended", or "none" when it is
  ///                       only known that a start was left out
  ///   "number"            which run of the task it is since the agent started, from 1, with all
  ///                       its attempts; absent when it is an earlier one, or none
  ///   "runs"              how many runs have had such a number; absent when it is none
  ///   "start", "end"      seconds since the epoch; absent when there is none or it is not known
  ///   "pid"               the command's process, while running
  ///   "result"            "Ok" or "Failed", when ended
  ///   "final"             "1" when it failed and is not tried again, else absent
  ///   "reason"            in words, when ended ("exit status 1 after 2.3 s") or waiting
  ///   "queued"            since when the task's next run waits for the end of this one, in seconds
  ///                       since the epoch; absent when none waits
  ///   "skipped"           the last start that was left out since the run, in seconds since the
  ///                       epoch; absent when there was none
  ///   "skipReason"        why it was left out, in words
  ///   "skips"             how many starts of the task were left out since the agent started;
  ///   absent
  ///                       when there was none
  ///
  /// 1; -1 and an empty map when no run is known. The oldest ended runs are forgotten; a task of
  /// which nothing is known any more is counted anew.
  virtual long GetRun(const BaseSDK::AString& taskId, AStringMap& run) = 0;
  /// Looks whether the task's job can be read and run, without running it. 1; -1 when not, and
  /// `problem` then says why, with file, line and key where there are any.
  virtual long CheckJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) = 0;
  /// Makes `text` the task's job, or replaces the job that it has: at every moment, also after a
  /// power cut, it is the old one or the new one as a whole. A run that goes on is not touched. 1;
  /// -1 when the text is no job or cannot be written, and `problem` then says all that is wrong.
  virtual long PutJob(const BaseSDK::AString& taskId, const BaseSDK::AString& text,
                      BaseSDK::AString& problem) = 0;
  /// The task's job in `text` as it stands, whether or not it can be run. 1; -1 when there is none,
  /// -2 when it cannot be read, and `problem` then says so in words.
  virtual long GetJob(const BaseSDK::AString& taskId, BaseSDK::AString& text,
                      BaseSDK::AString& problem) = 0;
  /// Removes the task's job. 1; -1 when there is none, -2 when it cannot be removed, and `problem`
  /// then says so in words.
  virtual long DeleteJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) = 0;
  /// What the task's runs have put out, in `text`: 64 KiB at most, from `position` on. `next` is
  /// the position behind it, so that a caller can follow; `text` is empty when there is no more
  /// yet. An empty `position` is the beginning of what is kept, and so is one that is no longer
  /// kept. Bytes that are not UTF-8 are replaced. 1; -1 when no run has put out anything.
  virtual long GetOutput(const BaseSDK::AString& taskId, const BaseSDK::AString& position,
                         BaseSDK::AString& text, BaseSDK::AString& next) = 0;
  /// Has the task's run end that is "running" or "waiting" for GetRun, as its timeout would end it,
  /// with all attempts that are to come; a start that waits for its end is left out. Returns at
  /// once: GetRun tells when the run is over. 1; -1 when none is under way.
  virtual long StopRun(const BaseSDK::AString& taskId) = 0;

  /// The identifier of this interface, as CIGetObjectInterface takes it.
  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxCommandHandler() = default;
};

}  // namespace Corvane::AgentInterfacesV3
