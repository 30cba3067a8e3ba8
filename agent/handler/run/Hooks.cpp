#include "agent/handler/run/Hooks.h"

#include "agent/handler/Log.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

Hooks::Hooks(const HandlerSettings& settings, OutputFiles& outputs, RunRecords& records,
             RunGroups& groups)
    : m_Settings(settings),
      m_Outputs(outputs),
      m_Records(records),
      m_Groups(groups),
      m_Streaks(settings.m_RecordPath) {
  ForgetTasksThatAreGone();
}

void Hooks::ForgetTasksThatAreGone() {
  for (const auto& [taskId, streak] : std::map(m_Streaks.All())) {
    if (access(m_Settings.JobFile(taskId).ToUtf8().c_str(), F_OK) != 0 && errno == ENOENT) {
      m_Streaks.Forget(taskId);
    }
  }
  m_Streaks.Save();
}

// What the end of the handler cuts short says nothing about the task.
void Hooks::NoteEnd(const Attempts& attempts) {
  if (m_IsStopping) {
    return;
  }
  m_HasCounted = true;
  if (attempts.JobToRun().m_OnFailure.empty()) {
    m_Streaks.Forget(attempts.Entry().m_TaskId);
  } else if (attempts.Succeeded()) {
    NoteSuccess(attempts);
  } else {
    NoteFailure(attempts);
  }
}

void Hooks::NoteFailure(const Attempts& attempts) {
  const Job& job = attempts.JobToRun();
  const AString& taskId = attempts.Entry().m_TaskId;
  FailureStreaks::Streak streak = m_Streaks.Of(taskId);
  ++streak.m_Failures;
  streak.m_End = attempts.EndTime();
  if (!streak.m_IsTold && streak.m_Failures >= job.m_After) {
    streak.m_IsTold = true;
    LineUp("on_failure", job.m_OnFailure, attempts, streak.m_Failures);
  }
  m_Streaks.Note(taskId, streak);
}

void Hooks::NoteSuccess(const Attempts& attempts) {
  const Job& job = attempts.JobToRun();
  const AString& taskId = attempts.Entry().m_TaskId;
  const FailureStreaks::Streak streak = m_Streaks.Of(taskId);
  if (streak.m_IsTold && !job.m_OnRecovery.empty()) {
    LineUp("on_recovery", job.m_OnRecovery, attempts, streak.m_Failures);
  }
  m_Streaks.Forget(taskId);
}

void Hooks::LineUp(const char* key, const std::vector<std::string>& words, const Attempts& attempts,
                   long failures) {
  Call call{key, attempts.Entry(), attempts.JobToRun().Beside(words)};
  auto& variables = call.m_Job.m_Environment;
  variables["NOX_RUN_RESULT"] = attempts.Succeeded() ? "Ok" : "Failed";
  variables["NOX_RUN_REASON"] = attempts.Outcome().ToUtf8();
  variables["NOX_RUN_START"] = std::to_string(attempts.StartTime());
  variables["NOX_RUN_END"] = std::to_string(attempts.EndTime());
  variables["NOX_FAILURES"] = std::to_string(failures);
  ReplaceCall(call);
}

// At the end of the line: the one of the task that is run last tells how things stand.
void Hooks::ReplaceCall(const Call& call) {
  const auto earlier = std::find_if(m_Line.begin(), m_Line.end(), [&](const Call& other) {
    return std::string_view(other.m_Key) == call.m_Key &&
           other.m_Entry.m_TaskId == call.m_Entry.m_TaskId;
  });
  if (earlier != m_Line.end()) {
    NoteNotRun(*earlier, "a later one takes its place");
    m_Line.erase(earlier);
  }
  m_Line.push_back(call);
}

void Hooks::Save() {
  if (std::exchange(m_HasCounted, false)) {
    m_Streaks.Save();
  }
}

void Hooks::Begin(std::size_t places) {
  const std::size_t most = m_Running.size() + places;
  for (auto it = m_Line.begin(); it != m_Line.end() && m_Running.size() < most;) {
    if (m_Running.contains(it->m_Entry.m_TaskId)) {
      ++it;
      continue;
    }
    const Call call = std::move(*it);
    it = m_Line.erase(it);
    BeginCall(call);
  }
}

void Hooks::BeginCall(const Call& call) {
  const AString& taskId = call.m_Entry.m_TaskId;
  try {
    m_Running[taskId] =
        std::make_unique<Run>(call.m_Entry, call.m_Job, AttemptNumber{1, 1, call.m_Key},
                              std::nullopt, m_Settings, m_Outputs.Of(taskId), m_Records, m_Groups);
  } catch (const std::bad_alloc&) {
    NoteNotRun(call, "the agent has no memory left");
  } catch (const std::exception& error) {
    NoteNotRun(call, error.what());
  }
}

void Hooks::NoteNotRun(const Call& call, const AString& why) {
  const AString& taskId = call.m_Entry.m_TaskId;
  ALOG(HandlerLog(), ALogger::Error, HandlerSource,
       AString("Task '%1': %2 failed: %3").Arg(taskId, call.m_Key, why));
  m_Outputs.Of(taskId)->AppendNote(AString("%1: %2").Arg(call.m_Key, why));
}

void Hooks::BeginStop() {
  m_IsStopping = true;
  for (const Call& call : std::exchange(m_Line, {})) {
    NoteNotRun(call, "the command handler ends");
  }
  for (const auto& [taskId, run] : m_Running) {
    run->End(Run::EndReason::Shutdown);
  }
}

void Hooks::AddHandles(std::vector<pollfd>& handles) const {
  for (const auto& [taskId, run] : m_Running) {
    run->AddHandles(handles);
  }
}

std::optional<Run::Clock::duration> Hooks::Rest() const {
  std::optional<Run::Clock::duration> least;
  for (const auto& [taskId, run] : m_Running) {
    if (const auto deadline = run->Deadline()) {
      const auto rest = *deadline - Run::Clock::now();
      least = std::min(least.value_or(rest), rest);
    }
  }
  return least;
}

void Hooks::Advance() {
  for (const auto& [taskId, run] : m_Running) {
    run->Advance();
  }
  std::erase_if(m_Running, [](const auto& entry) { return entry.second->IsOver(); });
}

void Hooks::GiveUp() {
  for (const auto& [taskId, run] : m_Running) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot end a command of task '%1' (process %2): leaving it to the next start")
             .Arg(taskId, DecimalText(run->Pid())));
  }
  m_Running.clear();
}

}  // namespace NoxHandler
