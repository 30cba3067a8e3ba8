#include "agent/client/TaskSummary.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AStringTokenizer.h>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

std::string LocalText(long seconds) {
  return BaseSDK::ADateTime(seconds).ToString("%Y-%m-%d %H:%M:%S").ToUtf8();
}

// The scheduler's own number of its last run, 0 or less when it counts none.
void TakeLastRun(long lastRun, TaskSummary& task) {
  task.m_Recorded = !IsUnrecorded(lastRun, task.m_LastRun);
  if (!task.m_Recorded) {
    task.m_LastRun = {LocalText(lastRun), lastRun, ""};
  } else if (task.m_LastRun && lastRun > 0) {
    task.m_LastRun->m_Seconds = lastRun;
  }
}

// Whether the scheduler knows nothing of the run: it begins no run so long before its handler does.
bool IsByHand(const HandlerRun& run, const std::optional<RunEntry>& recorded) {
  constexpr long LongestDelay = 3660;  // the greatest splay, and a minute
  return run.m_Start && (!recorded || *run.m_Start > recorded->m_Seconds + LongestDelay);
}

}  // namespace

std::optional<RunEntry> ReadRunEntry(const TaskGlance& document) {
  const BaseSDK::AStringTokenizer words(document.m_RunTime, " ", 1, 3);
  if (words.Token(0).IsEmpty()) {
    return std::nullopt;
  }
  const AString start = words.Token(0) + " " + words.Token(1);
  const long seconds = BaseSDK::ADateTime(start).GetTime();
  return RunEntry{start.ToUtf8(), seconds == 0 ? -1 : seconds, words.Token(2).ToUtf8()};
}

std::optional<RunEntry> ReadRunEntry(const std::string& taskXml) {
  return ReadRunEntry(GlanceAt(AString::FromUtf8(taskXml)));
}

bool IsUnrecorded(long lastRun, const std::optional<RunEntry>& recorded) {
  if (lastRun <= 0 || !recorded) {
    return lastRun > 0;
  }
  // In an hour that the clocks show twice, a text is read as the first time. So the texts are
  // compared as well.
  return recorded->m_Seconds < lastRun && recorded->m_Start != LocalText(lastRun);
}

// A record that begins after what the handler tells is that of a run that it knows nothing of.
std::string TrueState(const RunEntry& recorded, const std::optional<HandlerRun>& run) {
  if (!run || run->IsUnderWay() || recorded.m_State != "Ok") {
    return recorded.m_State;
  }
  if (recorded.m_Seconds <= run->m_End) {
    return run->m_IsFinal ? run->m_Result : recorded.m_State;
  }
  return recorded.m_Seconds <= run->m_Skipped ? "Skipped" : recorded.m_State;
}

TaskSummary Summarize(const std::string& id, const TaskGlance& document,
                      const std::optional<TaskReport>& report,
                      const std::optional<HandlerRun>& run) {
  TaskSummary task;
  task.m_Id = id;
  task.m_Enabled = document.m_Enabled;
  task.m_LastRun = ReadRunEntry(document);
  task.m_Loaded = report.has_value();
  if (report) {
    task.m_NextRun = report->m_NextRun;
    task.m_Late = report->m_Late;
    TakeLastRun(report->m_LastRun, task);
  }
  if (task.m_LastRun) {
    task.m_LastRun->m_State = TrueState(*task.m_LastRun, run);
  }
  if (task.m_Recorded && run && IsByHand(*run, task.m_LastRun)) {
    task.m_LastRun = {LocalText(*run->m_Start), *run->m_Start,
                      run->IsUnderWay() ? "Started" : run->m_Result};
  }
  if (task.m_Recorded && task.m_LastRun && run && run->m_Skipped && run->m_Start) {
    if (task.m_LastRun->m_State == "Skipped" && !run->m_Result.empty()) {
      task.m_LastRun->m_State = run->m_Result;
    }
    task.m_LastRun->m_Start = LocalText(*run->m_Start);
    task.m_LastRun->m_Seconds = *run->m_Start;
  }
  return task;
}

}  // namespace NoxAgent
