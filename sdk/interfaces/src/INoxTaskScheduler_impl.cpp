#include "RequestDecoding.h"

#include <AgentInterfacesV3/INoxTaskSchedulerTable.h>
#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>

namespace Corvane::AgentInterfacesV3 {

INoxTaskScheduler_impl::INoxTaskScheduler_impl() = default;
INoxTaskScheduler_impl::~INoxTaskScheduler_impl() = default;

long INoxTaskScheduler_impl::CallMethod(const AMsgIn* request) {
  using Self = INoxTaskScheduler_impl;
  if (request->Interface() != INoxTaskSchedulerTable.m_Name) {
    return INoxVeskClientAgent_impl::CallMethod(request);
  }
  return CallOperation<INoxTaskSchedulerTable, &Self::AddTask, &Self::DeleteTask, &Self::GetTaskXML,
                       &Self::FindFirstTask, &Self::FindNextTask, &Self::FindClose,
                       &Self::RefreshTaskList, &Self::SetRunState, &Self::GetTaskAttributes,
                       &Self::EnableTask>(*this, *request);
}

}  // namespace Corvane::AgentInterfacesV3
