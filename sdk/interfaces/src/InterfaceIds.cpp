#include <AgentInterfacesV3/INoxCommandHandler.h>
#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxObject.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandlerTable.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentInterfacesV3/INoxTaskSchedulerTable.h>
#include <AgentInterfacesV3/INoxVeskClientAgent.h>
#include <AgentInterfacesV3/InterfaceIds.h>

namespace Corvane::AgentInterfacesV3 {

using BaseSDK::AGuid;

const AGuid IID_INoxObject(INoxObjectTable.m_Identifier);
const AGuid IID_INoxVeskClientAgent(INoxVeskClientAgentTable.m_Identifier);
const AGuid IID_INoxTaskScheduler(INoxTaskSchedulerTable.m_Identifier);
const AGuid IID_INoxScheduledTaskHandler(INoxScheduledTaskHandlerTable.m_Identifier);
const AGuid IID_INoxCommandHandler(INoxCommandHandlerTable.m_Identifier);

const AGuid& INoxObject::GetIID() {
  return IID_INoxObject;
}
const AGuid& INoxVeskClientAgent::GetIID() {
  return IID_INoxVeskClientAgent;
}
const AGuid& INoxTaskScheduler::GetIID() {
  return IID_INoxTaskScheduler;
}
const AGuid& INoxScheduledTaskHandler::GetIID() {
  return IID_INoxScheduledTaskHandler;
}
const AGuid& INoxCommandHandler::GetIID() {
  return IID_INoxCommandHandler;
}

}  // namespace Corvane::AgentInterfacesV3
