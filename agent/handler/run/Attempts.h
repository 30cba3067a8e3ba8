#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/run/AttemptNumber.h"
#include "agent/handler/run/ConditionAnswer.h"
#include "agent/handler/run/OutputFiles.h"
#include "agent/handler/run/Run.h"
#include "agent/handler/run/RunGroups.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/system/WaitClock.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <poll.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace NoxHandler {

/// Why nothing more comes of a run that somebody has ended.
inline constexpr const char* EndedByRequest = "it was ended by request";

/// A task's run with all its attempts: as long as one fails, the job may want another, some time
/// later. It knows when the next one is to begin, but the supervisor begins it, because as many
/// commands may go on as are allowed. Between two attempts there is no process.
///
/// The supervisor waits on the handles and moments that are named here, and calls Advance when one
/// of them has come. [supervisor thread]
class Attempts {
 public:
  /// Nothing begins yet. The first attempt is ready when the task's share of the job's splay has
  /// passed since it was handed over. The references to the last five are borrowed.
  Attempts(const TaskBatch::Entry& entry, long number, Job job, const HandlerSettings& settings,
           OutputFiles& outputs, RunRecords& records, RunGroups& groups, const WaitClock& clock);
  Attempts(const Attempts&) = delete;
  Attempts& operator=(const Attempts&) = delete;

  /// Sets the wall-clock moment at which all ends, whatever goes on. REQUIRES: !HasBegun().
  void EndAt(std::optional<long> periodEnd) { m_PeriodEnd = periodEnd; }
  /// Why it is not to begin at all: it would be later than the job allows. Empty when it may begin.
  /// `taskXml` is the task's document. REQUIRES: !HasBegun().
  BaseSDK::AString WhyTooLate(const BaseSDK::AString& taskXml) const;
  /// Whether that depends on the document.
  bool AsksForDueTime() const { return m_Job.m_MaxLateSeconds > 0 && m_Entry.m_Late; }
  /// Whether the job has a condition that is yet to say yes. REQUIRES: !HasBegun().
  bool MustAsk() const { return !m_IsAllowed; }
  /// Asks the condition: its command goes on like an attempt. When it says no, the run is left out,
  /// or it is ready again some time later, as long as it would not be later then than the job
  /// allows. When it cannot say, the run has failed. `taskXml` is the task's document. REQUIRES:
  /// IsReady() and MustAsk().
  void Ask(const BaseSDK::AString& taskXml);
  /// Ends it before it has begun. REQUIRES: !HasBegun().
  void LeaveOut(const BaseSDK::AString& why);
  /// Whether it is time to begin an attempt.
  bool IsReady() const;
  /// Begins the next attempt. One that cannot be started has failed. REQUIRES: IsReady(), and
  /// !MustAsk() for the first one.
  void Begin();

  /// Whether the first attempt has begun.
  bool HasBegun() const { return m_Start.has_value(); }
  /// Whether an attempt goes on, with processes, or the condition is being asked.
  bool IsRunning() const { return m_Run != nullptr; }
  /// Whether none goes on and none follows.
  bool IsOver() const { return m_End.has_value(); }

  /// Adds the descriptors whose readiness calls for Advance.
  void AddHandles(std::vector<pollfd>& handles) const;
  /// How long until Advance is due, or Begin; nothing for never. What is ready is not due.
  std::optional<WaitClock::Moment::duration> Rest() const;
  /// The wall-clock moment at which Advance is due, in seconds since the epoch: the end of the
  /// active period.
  std::optional<long> PeriodEnd() const;
  /// Whether one of these two moments has come.
  bool IsDue() const;
  /// Does what is due. Never blocks.
  void Advance();
  /// Ends it for good, before its time: no attempt follows. One that goes on is asked to end. A
  /// second call changes nothing.
  void End(Run::EndReason reason);

  /// Whether the last attempt succeeded. REQUIRES: IsOver().
  bool Succeeded() const { return m_Succeeded; }
  /// Whether the scheduler is not to hand the task over again because it failed. It may if the job
  /// leaves that to the scheduler, and if the agent's end came before the last attempt. REQUIRES:
  /// IsOver().
  bool IsFinal() const;
  /// How the last attempt ended, and why none follows if more were to; of one that was left out,
  /// why.
  const BaseSDK::AString& Outcome() const { return m_Outcome; }
  /// The same of one that waits for its next attempt, and when that begins; of one that has not
  /// begun, what it waits for.
  BaseSDK::AString WaitsFor() const;

  const TaskBatch::Entry& Entry() const { return m_Entry; }
  const Job& JobToRun() const { return m_Job; }
  /// Which run of the task it is, as LatestRuns counts them.
  long Number() const { return m_Number; }
  OverlapRule Overlap() const { return m_Job.m_Overlap; }
  /// Of what goes on. REQUIRES: IsRunning().
  pid_t Pid() const { return m_Run->Pid(); }
  /// When the first attempt began, in seconds since the epoch. REQUIRES: HasBegun().
  long StartTime() const { return *m_Start; }
  /// Since when it is over, in seconds since the epoch. REQUIRES: IsOver().
  long EndTime() const { return *m_End; }

 private:
  std::optional<long> LatestStart(const BaseSDK::AString& taskXml) const;
  void TakeAnswer(const ConditionAnswer& answer);
  void TakeRefusal(const BaseSDK::AString& reason);
  void FailUnasked(const BaseSDK::AString& reason);
  BaseSDK::AString NextStep() const;
  void Conclude(bool succeeded, const BaseSDK::AString& outcome);
  void AppendNote(const BaseSDK::AString& text);
  void NoteFailedStart(const BaseSDK::AString& reason);

  const TaskBatch::Entry m_Entry;
  const long m_Number;
  const Job m_Job;
  const HandlerSettings& m_Settings;
  OutputFiles& m_Outputs;
  RunRecords& m_Records;
  RunGroups& m_Groups;
  const WaitClock& m_Clock;

  AttemptNumber m_Attempt;  ///< the one that goes on, or the last one
  std::optional<long> m_PeriodEnd;
  std::optional<long> m_Start;
  std::unique_ptr<Run> m_Run;                   ///< while it goes on, or the condition is asked
  bool m_IsAllowed;                             ///< by the condition
  BaseSDK::AString m_Refusal;                   ///< its last answer, when that was no
  std::optional<WaitClock::Moment> m_AskUntil;  ///< once it was asked, the last moment for that
  std::chrono::milliseconds m_Delay;            ///< of the first one
  WaitClock::Moment m_NextAt;                   ///< when the next attempt begins, if one does
  std::optional<Run::EndReason> m_EndedFor;     ///< once it is to end before its time
  BaseSDK::AString m_Outcome;
  bool m_Succeeded = false;
  std::optional<long> m_End;  ///< once it is over, in seconds since the epoch
};

}  // namespace NoxHandler
