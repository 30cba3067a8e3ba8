#include "agent/handler/run/Run.h"

#include "agent/handler/Log.h"
#include "agent/handler/job/Duration.h"
#include "agent/handler/process/Launch.h"
#include "agent/handler/system/WallClock.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>
#include <utility>

using BaseSDK::ALogger;
using BaseSDK::AString;
using namespace std::chrono_literals;

namespace NoxHandler {

namespace {

constexpr std::size_t ReadBytes = 64 * 1024;
// How often the pipe is read at the end: a process outside of the session may go on filling it.
constexpr int LastReads = 16;
// KILL cannot be refused, but new processes may have been started meanwhile.
constexpr auto KillAgain = 200ms;

std::string MakeToken() {
  std::random_device random;
  std::string token;
  for (int i = 0; i < 4; ++i) {
    const AString word = AString().SetNum(random(), 'x');
    token += word.ToUtf8();
  }
  return token;
}

AString SecondsText(Run::Clock::duration duration) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
  const std::string fraction = std::to_string(1000 + milliseconds % 1000).substr(1);
  return AString((std::to_string(milliseconds / 1000) + "." + fraction + " s").c_str());
}

std::optional<CpuBudget> BudgetOf(const std::shared_ptr<const ControlGroup>& group,
                                  const ProcessLimits& limits) {
  return group && limits.m_CpuSeconds
             ? std::optional<CpuBudget>(std::in_place, group,
                                        std::chrono::seconds(*limits.m_CpuSeconds))
             : std::nullopt;
}

// What the run's group limits need not be limited once more for each process.
Launch LaunchOf(const Job& job, const TaskBatch::Entry& entry, const std::string& token,
                const AttemptNumber& attempt, bool hasGroup) {
  Launch launch(job, entry, token, attempt.m_Number);
  if (hasGroup) {
    launch.m_Limits = launch.m_Limits.WithoutThoseOfGroup();
  }
  return launch;
}

AString CommandText(const Job& job) {
  std::string text = job.m_Command;
  for (const std::string& argument : job.m_Arguments) {
    text += " " + argument;
  }
  return AString(text.c_str());
}

}  // namespace

Run::Run(const TaskBatch::Entry& entry, const Job& job, const AttemptNumber& attempt,
         std::optional<long> periodEnd, const HandlerSettings& settings,
         std::shared_ptr<OutputFile> output, RunRecords& records, RunGroups& groups)
    : m_TaskId(entry.m_TaskId),
      m_Token(MakeToken()),
      m_Attempt(attempt),
      m_Success(job.m_Success),
      m_TimeoutSeconds(job.m_TimeoutSeconds),
      m_Limits(job.m_Limits),
      m_PeriodEnd(periodEnd),
      m_KillGrace(settings.m_KillGrace),
      m_Records(records),
      m_Group(groups.Make(entry.m_TaskId, m_Token, m_Limits)),
      m_CpuBudget(BudgetOf(m_Group, m_Limits)),
      m_Child(LaunchOf(job, entry, m_Token, attempt, m_Group != nullptr)),
      m_FirstPid(m_Child.Pid()),
      m_Session(m_FirstPid),
      m_LogOutput(settings.m_LogOutput),
      m_Output(std::move(output)) {
  if (m_Group) {
    m_Group->Add(m_FirstPid);
  }
  Record();
  NoteStart(job);
  m_Child.Go();
}

void Run::Record() {
  const auto process = ProcessTable::Find(m_FirstPid);
  const RunRecord record{m_FirstPid, process ? process->m_StartTicks : 0, ProcessTable::BootId(),
                         m_Token};
  if (const int error = m_Records.Write({m_TaskId, record}); error != 0) {
    throw JobError(AString("cannot note the run on disk: %1").Arg(strerror(error)));
  }
}

void Run::NoteStart(const Job& job) const {
  ALOG(HandlerLog(), ALogger::Information, HandlerSource,
       AString("Task '%1'%2 started: %3 (process %4)")
           .Arg(m_TaskId, m_Attempt.LogTitle(), CommandText(job), DecimalText(m_FirstPid)));
}

void Run::AddHandles(std::vector<pollfd>& handles) const {
  if (m_Child.Output() >= 0) {
    handles.push_back({m_Child.Output(), POLLIN, 0});
  }
  if (!m_End) {
    handles.push_back({m_Child.EndHandle(), POLLIN, 0});
    return;
  }
  for (const FileDescriptor& process : m_Session.EndHandles()) {
    handles.push_back({process.Get(), POLLIN, 0});
  }
}

std::optional<Run::Clock::time_point> Run::Deadline() const {
  if (m_KillAt) {
    return m_KillAt;
  }
  const auto timeout = TimeoutAt();
  if (!m_CpuBudget) {
    return timeout;
  }
  return std::min(timeout.value_or(Clock::time_point::max()), m_CpuBudget->NextLook());
}

std::optional<Run::Clock::time_point> Run::TimeoutAt() const {
  return m_TimeoutSeconds == 0 ? std::nullopt
                               : std::optional(m_Start + std::chrono::seconds(m_TimeoutSeconds));
}

std::optional<long> Run::PeriodEnd() const {
  return m_KillAt ? std::nullopt : m_PeriodEnd;
}

bool Run::IsDue() const {
  const auto deadline = Deadline();
  const auto periodEnd = PeriodEnd();
  return (deadline && *deadline <= Clock::now()) || (periodEnd && *periodEnd <= WallSeconds());
}

void Run::Advance() {
  (void)TakeOutput();
  CheckEnd();
  if (m_IsOver) {
    return;
  }
  if (m_KillAt) {
    KillWhenDue();
  } else if (const auto timeout = TimeoutAt(); timeout && *timeout <= Clock::now()) {
    End(EndReason::Timeout);
  } else if (m_CpuBudget && m_CpuBudget->IsSpent()) {
    End(EndReason::CpuTime);
  } else if (m_PeriodEnd && *m_PeriodEnd <= WallSeconds()) {
    End(EndReason::PeriodEnd);
  }
}

void Run::End(EndReason reason) {
  if (!m_KillAt && !m_IsOver) {
    // It may have ended by itself, unnoticed so far. Advance is left to notice it.
    const bool hasEnded = m_End || m_Child.End();
    m_Reason = hasEnded ? EndReason::None : reason;
    Terminate();
  }
}

std::optional<int> Run::ExitStatus() const {
  const bool isItsOwn =
      m_Reason == EndReason::None && m_End && m_End->m_Exited && m_StartFailure.IsEmpty();
  return isItsOwn ? std::optional(m_End->m_Code) : std::nullopt;
}

bool Run::Succeeded() const {
  const auto status = ExitStatus();
  return status && m_Success.contains(*status);
}

bool Run::TakeOutput() {
  if (m_Child.Output() < 0) {
    return false;
  }
  std::array<char, ReadBytes> buffer;
  const ssize_t got = read(m_Child.Output(), buffer.data(), buffer.size());
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
    return false;
  }
  if (got <= 0) {
    m_Child.CloseOutput();
    return false;
  }
  const std::string_view bytes(buffer.data(), static_cast<std::size_t>(got));
  if (m_Output) {
    m_Output->Append(bytes);
  }
  TakeLines(m_Lines.Add(bytes));
  return true;
}

void Run::CheckEnd() {
  if (!m_End) {
    m_End = m_Child.End();
  }
  if (!m_End) {
    return;
  }
  if (!m_Session.Refresh()) {
    Finish();
  } else if (!m_KillAt) {
    Terminate();
  }
}

void Run::Terminate() {
  (void)m_Session.Refresh();
  m_Session.Terminate();
  m_KillAt = Clock::now() + m_KillGrace;
}

void Run::KillWhenDue() {
  if (*m_KillAt > Clock::now()) {
    return;
  }
  if (!m_Killed) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Task '%1'%2 does not end when asked to: killing it")
             .Arg(m_TaskId, m_Attempt.LogTitle()));
  }
  m_Killed = true;
  (void)m_Session.Refresh();
  m_Session.Signal(SIGKILL);
  m_KillAt = Clock::now() + KillAgain;
}

void Run::Finish() {
  for (int i = 0; i < LastReads && TakeOutput(); ++i) {
  }
  m_Child.CloseOutput();
  TakeLines(m_Lines.Finish());
  m_StartFailure = m_Child.StartFailure();
  m_Outcome = DescribeEnd();
  if (m_Output) {
    m_Output->AppendNote(m_Attempt.Prefix() + m_Outcome);
  }
  const bool succeeded = Succeeded();
  ALOG(HandlerLog(), succeeded ? ALogger::Information : ALogger::Warning, HandlerSource,
       AString(succeeded ? "Task '%1'%2 succeeded: %3" : "Task '%1'%2 failed: %3")
           .Arg(m_TaskId, m_Attempt.LogTitle(), m_Outcome));
  m_Child.Reap();
  m_Records.Remove(m_Token);
  m_IsOver = true;
}

AString Run::DescribeEnd() const {
  if (!m_StartFailure.IsEmpty()) {
    return m_StartFailure + m_Attempt.Suffix();
  }
  return AString("%1 after %2%3")
      .Arg(DescribeReason(), SecondsText(Clock::now() - m_Start), m_Attempt.Suffix());
}

AString Run::DescribeReason() const {
  switch (m_Reason) {
    case EndReason::Timeout:
      return AString("ended by its timeout of %1 s").Arg(DecimalText(m_TimeoutSeconds));
    case EndReason::CpuTime:
      return AString("ended by its cpu_time of %1").Arg(Duration::Text(*m_Limits.m_CpuSeconds));
    case EndReason::PeriodEnd:
      return "ended by the end of its active period";
    case EndReason::Replaced:
      return "ended for the task's next run";
    case EndReason::Request:
      return "ended by request";
    case EndReason::Shutdown:
      return "ended by the end of the command handler";
    case EndReason::None:
      break;
  }
  if (m_Group && m_Limits.m_MemoryBytes && !Succeeded() && m_Group->RanOutOfMemory()) {
    return AString("killed for taking more than its memory of %1").Arg(m_Limits.MemoryText());
  }
  return m_End->m_Exited
             ? AString("exit status %1").Arg(DecimalText(m_End->m_Code))
             : AString("signal %1 (%2)").Arg(DecimalText(m_End->m_Code), strsignal(m_End->m_Code));
}

void Run::TakeLines(const std::vector<AString>& lines) {
  for (const AString& line : lines) {
    m_LastLine = line.IsEmpty() ? m_LastLine : line;
    if (m_LogOutput) {
      ALOG(HandlerLog(), ALogger::Information, HandlerSource,
           AString("Task '%1': %2").Arg(m_TaskId, line));
    }
  }
}

}  // namespace NoxHandler
