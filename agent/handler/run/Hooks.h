#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/run/Attempts.h"
#include "agent/handler/run/FailureStreaks.h"
#include "agent/handler/run/OutputFiles.h"
#include "agent/handler/run/Run.h"
#include "agent/handler/run/RunGroups.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <poll.h>

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace NoxHandler {

/// The commands that jobs have run when runs have failed (on_failure) and when one succeeds again
/// (on_recovery). They take places of runs; those of one task go on one after the other. One that
/// still waits when it is called for again is not run. What becomes of them is logged, and nothing
/// more. [supervisor thread]
class Hooks {
 public:
  /// Reads what an earlier agent has left of failures in a row. All references are borrowed.
  Hooks(const HandlerSettings& settings, OutputFiles& outputs, RunRecords& records,
        RunGroups& groups);

  /// The run is over, with all its attempts. Counts it, and has the command that it calls for wait.
  /// REQUIRES: it has begun.
  void NoteEnd(const Attempts& attempts);
  /// Makes safe what was counted since the last call.
  void Save();
  /// Begins commands that wait, at most so many. REQUIRES: Save() was called since NoteEnd.
  void Begin(std::size_t places);
  /// Ends all that go on, and lets go of those that wait. Runs that are over from now on do not
  /// count.
  void BeginStop();

  /// Adds the descriptors whose readiness calls for Advance.
  void AddHandles(std::vector<pollfd>& handles) const;
  /// How long until Advance is due; nothing for never.
  std::optional<Run::Clock::duration> Rest() const;
  /// Does what is due, if anything is. Never blocks.
  void Advance();

  /// How many go on.
  std::size_t Running() const { return m_Running.size(); }
  bool IsEmpty() const { return m_Running.empty() && m_Line.empty(); }
  /// Lets go of those that do not end; the next agent finds them on record.
  void GiveUp();

 private:
  struct Call {
    const char* m_Key;  ///< of the job
    TaskBatch::Entry m_Entry;
    Job m_Job;  ///< of the command
  };

  void NoteFailure(const Attempts& attempts);
  void NoteSuccess(const Attempts& attempts);
  void LineUp(const char* key, const std::vector<std::string>& words, const Attempts& attempts,
              long failures);
  void ReplaceCall(const Call& call);
  void BeginCall(const Call& call);
  void NoteNotRun(const Call& call, const BaseSDK::AString& why);
  void ForgetTasksThatAreGone();

  const HandlerSettings& m_Settings;
  OutputFiles& m_Outputs;
  RunRecords& m_Records;
  RunGroups& m_Groups;
  FailureStreaks m_Streaks;
  std::deque<Call> m_Line;  ///< those that wait, in order; of each task and key one at most
  std::map<BaseSDK::AString, std::unique_ptr<Run>> m_Running;  ///< by task
  bool m_HasCounted = false;                                   ///< since the last Save
  bool m_IsStopping = false;
};

}  // namespace NoxHandler
