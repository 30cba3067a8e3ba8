#include "agent/daemon/returns/CancelledReturns.h"

#include "agent/daemon/returns/SchedulerTasks.h"
#include "agent/document/TaskGlance.h"

#include <BaseSDK/AText.h>

#include <algorithm>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* EnableOperation = "EnableTask";

bool IsEditOfADisabledTask(const OperationCall& call) {
  return call.m_Replaces.has_value() && !GlanceAt(*call.m_Replaces).m_Enabled &&
         !GlanceAt(std::get<AString>(*call.m_Request.Find("taskXml"))).m_Enabled;
}

std::vector<AString> IdsIn(const OperationCall& call) {
  const std::string_view operation = call.m_Operation.m_Name;
  const bool enables = operation == EnableOperation;
  if (call.m_Request.Interface() != "INoxTaskScheduler" ||
      (!enables && operation != "AddTask" && operation != "DeleteTask")) {
    return {};
  }
  const AString& text = std::get<AString>(*call.m_Request.Find(enables ? "taskIds" : "taskId"));
  std::vector<AString> ids;
  BaseSDK::AText::StrToVector(text, ":", ids);
  return ids;
}

}  // namespace

CancelledReturns::CancelledReturns(OperationCall& call, TaskReturns& returns,
                                   const AString& scheduler)
    : m_Call(call), m_Returns(returns) {
  if (call.m_Plugin->Name() != scheduler || IsEditOfADisabledTask(call)) {
    return;
  }
  for (const AString& id : IdsIn(call)) {
    if (returns.Find(id.ToUtf8()).has_value()) {
      m_Ids.push_back(id.ToUtf8());
    }
  }
}

void CancelledReturns::Cancel() {
  std::erase_if(m_Ids, [this](const std::string& id) { return !IsDone(id); });
  m_Returns.Cancel(m_Ids);
}

// The answer to EnableTask does not tell a task that is not there from one that is so already.
bool CancelledReturns::IsDone(const std::string& taskId) {
  return m_Call.m_Operation.m_Name == EnableOperation
             ? HoldsTask(*m_Call.m_Plugin, AString::FromUtf8(taskId))
             : m_Call.m_Reply.Result() > 0;
}

}  // namespace NoxAgent
