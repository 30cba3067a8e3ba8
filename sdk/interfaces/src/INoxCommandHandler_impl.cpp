#include "RequestDecoding.h"

#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxCommandHandler_impl.h>

namespace Corvane::AgentInterfacesV3 {

INoxCommandHandler_impl::INoxCommandHandler_impl() = default;
INoxCommandHandler_impl::~INoxCommandHandler_impl() = default;

long INoxCommandHandler_impl::CallMethod(const AMsgIn* request) {
  using Self = INoxCommandHandler_impl;
  if (request->Interface() != INoxCommandHandlerTable.m_Name) {
    return INoxObject_impl::CallMethod(request);
  }
  return CallOperation<INoxCommandHandlerTable, &Self::GetRun, &Self::CheckJob, &Self::PutJob,
                       &Self::GetJob, &Self::DeleteJob, &Self::GetOutput, &Self::StopRun>(*this,
                                                                                          *request);
}

}  // namespace Corvane::AgentInterfacesV3
