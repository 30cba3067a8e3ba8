#include "RequestDecoding.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandlerTable.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>

namespace Corvane::AgentInterfacesV3 {

INoxScheduledTaskHandler_impl::INoxScheduledTaskHandler_impl() = default;
INoxScheduledTaskHandler_impl::~INoxScheduledTaskHandler_impl() = default;

long INoxScheduledTaskHandler_impl::CallMethod(const AMsgIn* request) {
  using Self = INoxScheduledTaskHandler_impl;
  if (request->Interface() != INoxScheduledTaskHandlerTable.m_Name) {
    return INoxObject_impl::CallMethod(request);
  }
  return CallOperation<INoxScheduledTaskHandlerTable, &Self::RunTasks, &Self::RunTasksEx>(*this,
                                                                                          *request);
}

}  // namespace Corvane::AgentInterfacesV3
