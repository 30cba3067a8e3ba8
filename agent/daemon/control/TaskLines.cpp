#include "agent/daemon/control/TaskLines.h"

#include "agent/daemon/control/JsonMessage.h"
#include "agent/daemon/control/ReplyError.h"
#include "agent/daemon/control/ReplyValue.h"
#include "agent/document/TaskGlance.h"
#include "agent/document/TaskId.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <AgentInterfacesV3/InterfaceIds.h>

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <optional>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;
using Corvane::AgentInterfacesV3::AStringMap;

namespace NoxAgent {
namespace {

constexpr std::size_t PartBytes = 16 * 1024;
constexpr const char* Scheduler = "INoxTaskScheduler";

// Whether there is such a task; the reply has what was asked for then.
bool Ask(Plugin& scheduler, const char* operation, const AString& taskId, AMsgReply& reply) {
  AMsgIn request(Scheduler, operation, reply);
  scheduler.Send(request.Set("taskId", taskId));
  ThrowIfError(reply);
  return reply.Result() > 0;
}

// An enumeration of the scheduler's, closed at the end.
class Enumeration {
 public:
  explicit Enumeration(Plugin& scheduler) : m_Scheduler(scheduler) {
    AMsgReply reply;
    Send("FindFirstTask", reply);
    m_Handle = Out<unsigned long>(reply, "handle");
    Take(reply);
  }
  Enumeration(const Enumeration&) = delete;
  Enumeration& operator=(const Enumeration&) = delete;
  ~Enumeration() {
    if (m_Handle != 0) {
      AMsgReply reply;
      Send("FindClose", reply);
    }
  }

  // The ID that was found last; nothing at the end.
  const std::optional<AString>& Id() const { return m_Id; }

  void Next() {
    AMsgReply reply;
    Send("FindNextTask", reply);
    Take(reply);
  }

 private:
  void Send(const char* operation, AMsgReply& reply) {
    AMsgIn request(Scheduler, operation, reply);
    m_Scheduler.Send(request.Set("handle", m_Handle));
  }

  void Take(const AMsgReply& reply) {
    ThrowIfError(reply);
    m_Id = reply.Result() > 0 ? std::optional(Out<AString>(reply, "taskId")) : std::nullopt;
  }

  Plugin& m_Scheduler;
  unsigned long m_Handle = 0;
  std::optional<AString> m_Id;
};

std::vector<AString> IdsOf(Plugin& scheduler, const AString& extension) {
  std::vector<AString> ids;
  for (Enumeration tasks(scheduler); tasks.Id().has_value(); tasks.Next()) {
    if (FaultOfTaskId(*tasks.Id(), extension).IsEmpty()) {
      ids.push_back(*tasks.Id());
    }
  }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

const AString& TextAt(const AStringMap& attributes, const char* key) {
  static const AString None;
  const auto found = attributes.find(key);
  return found == attributes.end() ? None : found->second;
}

// A moment is told when there is one.
void AddTime(const char* name, const AString& seconds, Json& line) {
  if (const long time = seconds.ToLong(10); time > 0) {
    line[name] = time;
  }
}

}  // namespace

TaskLines::TaskLines(Parts parts, bool withAttributes)
    : m_Parts(std::move(parts)),
      m_WithAttributes(withAttributes),
      m_Ids(
          IdsOf(*m_Parts.m_Scheduler, AString::FromUtf8(m_Parts.m_Files.Directory().Extension()))) {
  m_Parts.m_Glances.ForgetAllBut(m_Ids);
}

TaskLines::TaskLines(Parts parts, const AString& taskId)
    : m_Parts(std::move(parts)), m_WithAttributes(false), m_Ids{taskId} {}

std::string TaskLines::Next() {
  std::string lines;
  while (m_Next < m_Ids.size() && lines.size() < PartBytes) {
    lines += LineOf(m_Ids[m_Next++]);
  }
  return lines;
}

// The document is read last: a run that is in memory and not in the document was not written then.
std::string TaskLines::LineOf(const AString& taskId) {
  Json line = ReportOn(taskId);
  const std::optional<TaskGlance> document = DocumentOf(taskId);
  if (!document.has_value()) {
    return {};
  }
  line["id"] = taskId.ToUtf8();
  line["enabled"] = document->m_Enabled;
  if (!document->m_RunTime.IsEmpty()) {
    line["runTime"] = document->m_RunTime.ToUtf8();
  }
  const std::optional<long> returns = m_Parts.m_Returns.Find(taskId.ToUtf8());
  if (!document->m_Enabled && returns.has_value()) {
    line["returns"] = *returns;
  }
  return JsonMessage::Dump(line) + "\n";
}

// A document behind a symbolic link changes while the link stays as it is.
std::optional<FileIdentity> TaskLines::ConditionOf(const AString& taskId) const {
  const std::string path = m_Parts.m_Files.Directory().FileOf(taskId.ToUtf8());
  BaseSDK::AFileSystem::Info info;
  const bool tells = m_Parts.m_Files.GetInfo(path.c_str(), info) == 0 && S_ISREG(info.m_Mode);
  return tells ? std::optional(FileIdentity(info)) : std::nullopt;
}

// The file's condition is looked at before it is read: what is kept is of this one or a later one,
// and a later one does not pass for this.
std::optional<TaskGlance> TaskLines::DocumentOf(const AString& taskId) {
  const long now = static_cast<long>(std::time(nullptr));
  const std::optional<FileIdentity> condition = ConditionOf(taskId);
  if (condition.has_value()) {
    if (auto known = m_Parts.m_Glances.Find(taskId, *condition)) {
      return known;
    }
  }
  AMsgReply reply;
  if (!Ask(*m_Parts.m_Scheduler, "GetTaskXML", taskId, reply)) {
    return std::nullopt;
  }
  const TaskGlance glance = GlanceAt(Out<AString>(reply, "taskXml"));
  if (condition.has_value()) {
    m_Parts.m_Glances.Keep(taskId, *condition, glance, now);
  }
  return glance;
}

Json TaskLines::ReportOn(const AString& taskId) {
  AMsgReply reply;
  const bool isLoaded = Ask(*m_Parts.m_Scheduler, "GetTaskAttributes", taskId, reply);
  const auto* const attributes = FindOut<AStringMap>(reply, "attributes");
  Json line = {{"loaded", isLoaded}};
  if (!isLoaded || attributes == nullptr) {
    return line;
  }
  AddTime("lastRun", TextAt(*attributes, "t3"), line);
  AddTime("nextRun", TextAt(*attributes, "t6"), line);
  line["late"] = TextAt(*attributes, "t2").ToLong(10) != 0;
  if (m_WithAttributes) {
    line["attributes"] = JsonMessage::EncodeMap(*attributes);
  }
  AddRun(taskId, TextAt(*attributes, "t1"), line);
  return line;
}

// A handler that cannot be asked tells nothing, and the list goes on without.
void TaskLines::AddRun(const AString& taskId, const AString& classId, Json& line) {
  Plugin* const handler = HandlerOf(classId);
  if (handler == nullptr) {
    return;
  }
  AMsgReply reply;
  AMsgIn request("INoxCommandHandler", "GetRun", reply);
  handler->Send(request.Set("taskId", taskId));
  if (!reply.IsError() && reply.Result() > 0) {
    line["run"] = JsonMessage::EncodeMap(Out<AStringMap>(reply, "run"));
  }
}

// Null when the handler tells nothing of runs.
Plugin* TaskLines::HandlerOf(const AString& classId) {
  if (classId != m_HandlerId) {
    m_HandlerId = classId;
    m_Handler = m_Parts.m_Plugins.FindClass(classId);
    if (m_Handler != nullptr &&
        !m_Handler->Serves(Corvane::AgentInterfacesV3::IID_INoxCommandHandler)) {
      m_Handler = nullptr;
    }
  }
  return m_Handler.get();
}

}  // namespace NoxAgent
