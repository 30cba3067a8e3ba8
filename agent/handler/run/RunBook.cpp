#include "agent/handler/run/RunBook.h"

#include "agent/handler/Log.h"
#include "agent/handler/system/WallClock.h"

#include <AgentInterfacesV3/AMsgGroup.h>

#include <unistd.h>

#include <cerrno>

using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgGroup;

namespace NoxHandler {

namespace {

constexpr const char* TooManyGoOn = "as many runs go on as may";

void LogDue(const AString& taskId, const AString& but) {
  ALOG(HandlerLog(), ALogger::Information, HandlerSource,
       AString("Task '%1' is due, but %2").Arg(taskId, but));
}

}  // namespace

RunBook::RunBook(const HandlerSettings& settings)
    : m_Settings(settings),
      m_Outputs(settings),
      m_Failures(settings.m_RecordPath),
      m_Scheduler(settings.m_SchedulerClassId) {
  RememberFailures();
}

// Without the tasks that are gone.
void RunBook::RememberFailures() {
  for (const auto& [taskId, failure] : std::map(m_Failures.All())) {
    if (access(m_Settings.JobFile(taskId).ToUtf8().c_str(), F_OK) != 0 && errno == ENOENT) {
      m_Failures.Forget(taskId);
    } else {
      m_Latest.NoteEnd(taskId, {failure.m_Start, failure.m_End, false, true, failure.m_Reason});
    }
  }
}

void RunBook::NoteProgress(const Attempts& attempts) {
  const AString& taskId = attempts.Entry().m_TaskId;
  if (!attempts.HasBegun()) {
    m_Latest.NoteWaiting(taskId, attempts.Number(), attempts.WaitsFor());
  } else if (attempts.IsRunning()) {
    m_Latest.NoteStart(taskId, attempts.Number(), attempts.StartTime(), attempts.Pid());
  } else {
    m_Latest.NotePause(taskId, attempts.Number(), attempts.StartTime(), attempts.WaitsFor());
  }
}

void RunBook::NoteInLine(const Attempts& attempts) {
  const AString& taskId = attempts.Entry().m_TaskId;
  LogDue(taskId, AString("%1: starts after one of them").Arg(TooManyGoOn));
  if (attempts.HasBegun()) {
    m_Latest.NotePause(taskId, attempts.Number(), attempts.StartTime(),
                       AString("%1; %2, and the next one begins after one of them")
                           .Arg(attempts.Outcome(), TooManyGoOn));
  } else {
    m_Latest.NoteWaiting(taskId, attempts.Number(),
                         AString("%1; it starts after one of them").Arg(TooManyGoOn));
  }
}

void RunBook::NoteQueued(const AString& taskId, const char* how) {
  LogDue(taskId, AString("its previous run goes on: %1").Arg(how));
  m_Latest.NoteQueued(taskId, WallSeconds());
}

void RunBook::NoteBeside(const AString& taskId) const {
  LogDue(taskId, "its previous run goes on: starts beside it");
}

void RunBook::NoteEcho(const AString& taskId, const AString& why) const {
  LogDue(taskId, AString("%1: left out").Arg(why));
}

void RunBook::NoteSkip(const AString& taskId, const AString& why) {
  m_Latest.NoteSkip(taskId, why, WallSeconds());
  WriteSkip(taskId, why);
}

void RunBook::WriteSkip(const AString& taskId, const AString& why) {
  LogDue(taskId, AString("%1: left out").Arg(why));
  m_Outputs.Of(taskId)->AppendNote(AString("left out: %1").Arg(why));
}

void RunBook::NoteQueuedSkip(const AString& taskId, const AString& why) {
  m_Latest.NoteNoneQueued(taskId);
  NoteSkip(taskId, why);
}

// Without its job nobody knows what is to become of a task that failed: the scheduler decides.
LatestRuns::Ending RunBook::NoteNoJob(const AString& taskId, long number, const AString& reason) {
  ALOG(HandlerLog(), ALogger::Error, HandlerSource,
       AString("Task '%1' failed: %2").Arg(taskId, reason));
  m_Outputs.Of(taskId)->AppendNote(reason);
  const long now = WallSeconds();
  return {now, now, false, false, reason, number};
}

const char* RunBook::NoteEnd(const AString& taskId, const LatestRuns::Ending& ending) {
  m_Latest.NoteEnd(taskId, ending);
  if (ending.m_IsFinal) {
    m_Failures.Note(taskId, {ending.m_Start, ending.m_End, ending.m_Reason});
  } else {
    m_Failures.Forget(taskId);
  }
  return ending.m_Succeeded || ending.m_IsFinal ? "Ok" : "Failed";
}

// Were it not finished to the scheduler, it would come again within the hour, later still.
const char* RunBook::NoteLeftOut(const Attempts& attempts,
                                 const std::optional<LatestRuns::Facts>& before) {
  const AString& taskId = attempts.Entry().m_TaskId;
  WriteSkip(taskId, attempts.Outcome());
  m_Latest.NoteLeftOut(taskId, before, attempts.Outcome(), attempts.EndTime());
  if (const auto facts = m_Latest.Find(taskId); facts && facts->m_IsFinal) {
    m_Failures.Note(taskId, {*facts->m_Start, *facts->m_End, facts->m_Reason});
  }
  return "Ok";
}

// As a group: the states of runs that end together are made safe together.
void RunBook::Report(const States& states) {
  if (states.empty()) {
    return;
  }
  m_Failures.Save();  // first: else nobody would know of a failure if the agent ended in between
  const AMsgGroup group;
  for (const auto& [taskId, state] : states) {
    m_Scheduler.Report(taskId, state);
  }
}

}  // namespace NoxHandler
