#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/process/ChildProcess.h"
#include "agent/handler/process/ControlGroup.h"
#include "agent/handler/process/Session.h"
#include "agent/handler/run/AttemptNumber.h"
#include "agent/handler/run/CpuBudget.h"
#include "agent/handler/run/LineSplitter.h"
#include "agent/handler/run/OutputFile.h"
#include "agent/handler/run/RunGroups.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <poll.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxHandler {

/// One attempt to run a job, or a command beside that, from its start until the last of its
/// processes is gone. A run ends when its command ends. Processes that the command leaves behind in
/// its session are then ended as well, so that nothing of a finished run goes on unseen.
///
/// The supervisor waits on the handles and moments that a run names, and calls Advance when one of
/// them has come. [supervisor thread]
class Run {
 public:
  using Clock = std::chrono::steady_clock;

  /// Why a run that still goes on is to end.
  enum class EndReason { None, Timeout, CpuTime, PeriodEnd, Replaced, Request, Shutdown };

  /// Starts the command; `attempt` says which one it is of the task's run. `periodEnd` is the
  /// wall-clock moment at which the run is to end, if any, and `output` the task's file; null when
  /// its output is for the log alone. Throws JobError when it cannot be started; nothing is left
  /// running then. `records` and `groups` are borrowed.
  Run(const TaskBatch::Entry& entry, const Job& job, const AttemptNumber& attempt,
      std::optional<long> periodEnd, const HandlerSettings& settings,
      std::shared_ptr<OutputFile> output, RunRecords& records, RunGroups& groups);
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  /// Adds the descriptors whose readiness calls for Advance.
  void AddHandles(std::vector<pollfd>& handles) const;
  /// The moment of the steady clock at which Advance is due; nothing for never.
  std::optional<Clock::time_point> Deadline() const;
  /// The same of the wall clock, in seconds since the epoch: the end of the active period.
  std::optional<long> PeriodEnd() const;
  /// Whether one of these two moments has come.
  bool IsDue() const;

  /// Does what is due: takes output, ends processes, notices the end. Never blocks.
  void Advance();
  /// Asks the run's processes to end (TERM); Advance kills them when the grace has passed. A second
  /// call changes nothing.
  void End(EndReason reason);

  /// Whether the last process is gone; the run's record on disk is then gone too.
  bool IsOver() const { return m_IsOver; }
  /// Whether the command ended by itself with an exit status that counts as success. REQUIRES:
  /// IsOver().
  bool Succeeded() const;
  /// The exit status with which the command ended by itself; nothing for any other end. REQUIRES:
  /// IsOver().
  std::optional<int> ExitStatus() const;
  /// The last line that was put out and is not empty, as the log has it.
  const BaseSDK::AString& LastLine() const { return m_LastLine; }
  /// How it ended, in words, such as "exit status 1 after 2.300 s". REQUIRES: IsOver().
  const BaseSDK::AString& Outcome() const { return m_Outcome; }
  /// Why it was ended, None when it ended by itself.
  EndReason Reason() const { return m_Reason; }
  pid_t Pid() const { return m_FirstPid; }

 private:
  void Record();
  void NoteStart(const Job& job) const;
  std::optional<Clock::time_point> TimeoutAt() const;
  bool TakeOutput();
  void CheckEnd();
  void Terminate();
  void KillWhenDue();
  void Finish();
  BaseSDK::AString DescribeEnd() const;
  BaseSDK::AString DescribeReason() const;
  void TakeLines(const std::vector<BaseSDK::AString>& lines);

  const BaseSDK::AString m_TaskId;
  const std::string m_Token;
  const AttemptNumber m_Attempt;
  const ExitStatuses m_Success;
  const long m_TimeoutSeconds;
  const ProcessLimits m_Limits;
  const std::optional<long> m_PeriodEnd;
  const std::chrono::milliseconds m_KillGrace;
  RunRecords& m_Records;
  const Clock::time_point m_Start = Clock::now();

  const std::shared_ptr<const ControlGroup> m_Group;  ///< null when it has none of its own
  std::optional<CpuBudget> m_CpuBudget;
  ChildProcess m_Child;
  const pid_t m_FirstPid;  ///< stays when the process is reaped
  Session m_Session;
  const bool m_LogOutput;
  LineSplitter m_Lines;
  BaseSDK::AString m_LastLine;
  const std::shared_ptr<OutputFile> m_Output;  ///< may be null

  EndReason m_Reason = EndReason::None;
  std::optional<ChildProcess::Outcome> m_End;  ///< once the command has ended
  BaseSDK::AString m_StartFailure;             ///< once the run is over, if it could not start
  BaseSDK::AString m_Outcome;                  ///< once the run is over
  std::optional<Clock::time_point> m_KillAt;   ///< once its processes were asked to end
  bool m_Killed = false;
  bool m_IsOver = false;
};

}  // namespace NoxHandler
