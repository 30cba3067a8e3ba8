#include "agent/client/TaskSummary.h"

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

long NumberIn(const std::map<std::string, std::string>& report, const char* key) {
  const auto found = report.find(key);
  return found == report.end() ? 0 : AString::FromUtf8(found->second).ToLong(10);
}

}  // namespace

std::optional<RunEntry> ReadRunEntry(const std::string& taskXml) {
  return RunEntryOf(BaseSDK::AXmlDoc(AString::FromUtf8(taskXml)));
}

bool IsUnrecorded(long lastRun, const std::optional<RunEntry>& recorded) {
  if (lastRun <= 0 || !recorded) {
    return lastRun > 0;
  }
  // An hour that comes twice is read as its first coming, so texts are compared as well.
  const AString start = BaseSDK::ADateTime(lastRun).ToString("%Y-%m-%d %H:%M:%S");
  return recorded->m_Seconds < lastRun && recorded->m_Start != start.ToUtf8();
}

TaskSummary Summarize(const std::string& id, const std::string& taskXml, const TaskReport& report) {
  const BaseSDK::AXmlDoc document(AString::FromUtf8(taskXml));
  TaskSummary task;
  task.m_Id = id;
  task.m_Enabled = IsEnabled(document);
  task.m_LastRun = RunEntryOf(document);
  task.m_Loaded = report.has_value();
  if (!report) {
    return task;
  }
  task.m_NextRun = NumberIn(*report, "t6");
  task.m_Late = NumberIn(*report, "t2") != 0;
  // The agent may live in another zone than this process, and its own number needs no zone.
  const long lastRun = NumberIn(*report, "t3");
  if (task.m_LastRun && lastRun > 0) {
    task.m_LastRun->m_Seconds = lastRun;
  }
  return task;
}

}  // namespace NoxAgent
