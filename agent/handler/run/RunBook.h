#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/run/Attempts.h"
#include "agent/handler/run/FinalFailures.h"
#include "agent/handler/run/LatestRuns.h"
#include "agent/handler/run/OutputFiles.h"
#include "agent/handler/task/StateReporter.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <map>
#include <optional>

namespace NoxHandler {

/// Makes known what happens to the runs of tasks: in the log, in the output files, to whoever asks,
/// to the next agent, and to the scheduler. [supervisor thread, but for Latest]
class RunBook {
 public:
  /// Reads what an earlier agent has left of failures. `settings` is borrowed.
  explicit RunBook(const HandlerSettings& settings);

  /// What became of the tasks' runs. [any thread]
  const LatestRuns& Latest() const { return m_Latest; }
  OutputFiles& Outputs() { return m_Outputs; }
  /// The way to the scheduler.
  StateReporter& Scheduler() { return m_Scheduler; }
  const StateReporter& Scheduler() const { return m_Scheduler; }

  /// As LatestRuns.
  long NewNumber(const BaseSDK::AString& taskId) { return m_Latest.NewNumber(taskId); }
  /// How things stand with a run that is not over, whenever that has changed.
  void NoteProgress(const Attempts& attempts);
  /// It waits for one of too many others to end.
  void NoteInLine(const Attempts& attempts);
  /// A further start waits for the end of the task's run; `how` says until when.
  void NoteQueued(const BaseSDK::AString& taskId, const char* how);
  /// A further run of the task begins beside the one that goes on.
  void NoteBeside(const BaseSDK::AString& taskId) const;
  /// The scheduler has only read the task again: no start is lost.
  void NoteEcho(const BaseSDK::AString& taskId, const BaseSDK::AString& why) const;
  /// A start is left out.
  void NoteSkip(const BaseSDK::AString& taskId, const BaseSDK::AString& why);
  /// The start that waits for the end of the task's run is left out.
  void NoteQueuedSkip(const BaseSDK::AString& taskId, const BaseSDK::AString& why);
  /// The task has no job that could be read, for the run of that number: returns how that ended.
  LatestRuns::Ending NoteNoJob(const BaseSDK::AString& taskId, long number,
                               const BaseSDK::AString& reason);

  /// The states that the scheduler is to know of tasks, each "Ok" or "Failed".
  using States = std::map<BaseSDK::AString, const char*>;
  /// All runs of the task are over, and the one that began last ended so: returns the state.
  const char* NoteEnd(const BaseSDK::AString& taskId, const LatestRuns::Ending& ending);
  /// The task's only run was left out before it began: returns the state. `before` is what was
  /// known of the task before the run was handed over.
  const char* NoteLeftOut(const Attempts& attempts, const std::optional<LatestRuns::Facts>& before);
  /// Tells the scheduler.
  void Report(const States& states);

 private:
  void WriteSkip(const BaseSDK::AString& taskId, const BaseSDK::AString& why);
  void RememberFailures();

  const HandlerSettings& m_Settings;
  OutputFiles m_Outputs;
  LatestRuns m_Latest;
  FinalFailures m_Failures;
  StateReporter m_Scheduler;
};

}  // namespace NoxHandler
