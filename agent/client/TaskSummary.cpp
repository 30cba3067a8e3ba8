#include "agent/client/TaskSummary.h"

#include "agent/client/AgentApi.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AXmlDoc.h>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

std::optional<RunEntry> RunEntryOf(const BaseSDK::AXmlDoc& document) {
  const AString text = document.SelectSingleNode("//RunTime/text()");
  const BaseSDK::AStringTokenizer words(text, " ", 1, 3);
  if (words.Token(0).IsEmpty()) {
    return std::nullopt;
  }
  const AString start = words.Token(0) + " " + words.Token(1);
  const long seconds = BaseSDK::ADateTime(start).GetTime();
  return RunEntry{start.ToUtf8(), seconds == 0 ? -1 : seconds, words.Token(2).ToUtf8()};
}

bool IsEnabled(const BaseSDK::AXmlDoc& document) {
  const AString enabled = document.SelectSingleNode("/Task/@Enabled");
  return enabled.IsEmpty() || enabled.ToLong(10) != 0;
}

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

}  // namespace

std::optional<RunEntry> ReadRunEntry(const std::string& taskXml) {
  return RunEntryOf(BaseSDK::AXmlDoc(AString::FromUtf8(taskXml)));
}

bool IsUnrecorded(long lastRun, const std::optional<RunEntry>& recorded) {
  if (lastRun <= 0 || !recorded) {
    return lastRun > 0;
  }
  // In an hour that the clocks show twice, a text is read as the first time. So the texts are
  // compared as well.
  return recorded->m_Seconds < lastRun && recorded->m_Start != LocalText(lastRun);
}

TaskSummary Summarize(const std::string& id, const std::string& taskXml, const TaskReport& report,
                      const std::optional<HandlerRun>& run) {
  const BaseSDK::AXmlDoc document(AString::FromUtf8(taskXml));
  TaskSummary task;
  task.m_Id = id;
  task.m_Enabled = IsEnabled(document);
  task.m_LastRun = RunEntryOf(document);
  task.m_Loaded = report.has_value();
  if (report) {
    task.m_NextRun = AttributeNumber(*report, "t6", 0);
    task.m_Late = AttributeNumber(*report, "t2", 0) != 0;
    TakeLastRun(AttributeNumber(*report, "t3", 0), task);
  }
  if (task.m_Recorded && task.m_LastRun && run && run->m_Skipped && run->m_Start) {
    task.m_LastRun->m_Start = LocalText(*run->m_Start);
    task.m_LastRun->m_Seconds = *run->m_Start;
  }
  return task;
}

}  // namespace NoxAgent
