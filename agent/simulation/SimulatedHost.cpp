#include "agent/simulation/SimulatedHost.h"

#include "agent/Protocol.h"

namespace NoxAgent {

using BaseSDK::AGuid;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;
using Kind = SimulationEvent::Kind;

SimulatedHost::SimulatedHost(SimulationLog& log, INoxScheduledTaskHandler& handler)
    : m_Log(log), m_Handler(handler), m_Before(AgentSDK::AHost::Replace(this)) {}

SimulatedHost::~SimulatedHost() {
  (void)AgentSDK::AHost::Replace(m_Before);
}

long SimulatedHost::PostNotification(long code, const AString& text) {
  SimulationEvent event;
  event.m_Task = text.ToUtf8();
  if (code == TaskDeleted) {
    event.m_Kind = Kind::Deleted;
    m_Log.Add(event);
  }
  event.m_Kind = Kind::Notification;
  event.m_Code = code;
  m_Log.Add(event);
  return 1;
}

AString SimulatedHost::GetConfigString(const AString&, const AString& key,
                                       const AString& fallback) {
  if (key == AString("task_storage_path")) {
    return TaskDirectory;
  }
  return key == AString("task_file_extension") ? AString(Extension) : fallback;
}

long SimulatedHost::OpenObject(const AString& classId, const AGuid& interfaceId, unsigned long,
                               void*& object) {
  object = nullptr;
  if (interfaceId.Compare(INoxScheduledTaskHandler::GetIID()) != 0) {
    return -1;
  }
  if (!AGuid(classId).IsValid()) {
    SimulationEvent event;
    event.m_Kind = Kind::NoHandler;
    event.m_Task = classId.ToUtf8();
    m_Log.Add(event);
    return -1;
  }
  object = &m_Handler;
  return 1;
}

}  // namespace NoxAgent
