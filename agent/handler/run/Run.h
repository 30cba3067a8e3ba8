#pragma once

#include <BaseSDK/AString.h>
#include <poll.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/process/ChildProcess.h"
#include "agent/handler/process/Session.h"
#include "agent/handler/run/LineSplitter.h"
#include "agent/handler/run/OutputFile.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/task/TaskBatch.h"

/// One run of a job, from its start until the last of its processes is gone. A run ends when its
/// command ends; what the command leaves behind in its session is ended then as well, so that
/// nothing of a finished run goes on unseen.
///
/// [supervisor thread]
class CRun {
 public:
  using Clock = std::chrono::steady_clock;

  /// Why a run that still goes on is to end.
  enum class EReason { None, Timeout, PeriodEnd, Replaced, Shutdown };

  /// Starts the command. `periodEnd` is the wall-clock moment at which the run is to end, if any.
  /// Throws CJobError when it cannot be started; nothing is left running then. Both references are
  /// borrowed.
  CRun(const CTaskBatch::CEntry& entry, const CJob& job, std::optional<long> periodEnd,
       const CHandlerSettings& settings, const CRunRecords& records);
  CRun(const CRun&) = delete;
  CRun& operator=(const CRun&) = delete;

  /// Adds what to wait for.
  void AddHandles(std::vector<pollfd>& handles) const;
  /// When Advance is due by the clock alone: by the steady one, and by the wall clock.
  std::optional<Clock::time_point> Deadline() const;
  std::optional<long> PeriodEnd() const;
  /// Whether one of these has come.
  bool IsDue() const;

  /// Does what is due: takes output, ends what is to end. Never blocks.
  void Advance();
  /// Asks the run's processes to end, and kills them when the grace has passed. The first reason
  /// stands.
  void End(EReason reason);

  /// Whether the last process is gone. The run's record is gone too then.
  bool IsOver() const { return m_IsOver; }
  /// Exit status 0, and not because the run had to end. REQUIRES: IsOver.
  bool Succeeded() const;
  EOverlap Overlap() const { return m_Overlap; }
  pid_t Pid() const { return m_FirstPid; }

 private:
  void NoteStart(const CJob& job) const;
  bool TakeOutput();
  void CheckEnd();
  void Terminate();
  void KillWhenDue();
  void Finish();
  BaseSDK::AString DescribeEnd() const;
  void LogLines(const std::vector<BaseSDK::AString>& lines) const;

  const BaseSDK::AString m_TaskId;
  const std::string m_Token;
  const EOverlap m_Overlap;
  const long m_TimeoutSeconds;
  const std::optional<long> m_PeriodEnd;
  const std::chrono::milliseconds m_KillGrace;
  const CRunRecords& m_Records;
  const Clock::time_point m_Start = Clock::now();

  CChildProcess m_Child;
  const pid_t m_FirstPid;  // stays when the process is reaped
  CSession m_Session;
  CLineSplitter m_Lines;
  COutputFile m_Output;

  EReason m_Reason = EReason::None;
  std::optional<CChildProcess::CEnd> m_End;   // once the command has ended
  std::optional<Clock::time_point> m_KillAt;  // once its processes were asked to end
  bool m_Killed = false;
  bool m_IsOver = false;
};
