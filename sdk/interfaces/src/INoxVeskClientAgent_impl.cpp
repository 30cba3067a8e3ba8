#include "RequestDecoding.h"

#include <AgentInterfacesV3/INoxVeskClientAgentTable.h>
#include <AgentInterfacesV3/INoxVeskClientAgent_impl.h>

namespace Corvane::AgentInterfacesV3 {

INoxVeskClientAgent_impl::INoxVeskClientAgent_impl() = default;
INoxVeskClientAgent_impl::~INoxVeskClientAgent_impl() = default;

long INoxVeskClientAgent_impl::CallMethod(const AMsgIn* request) {
  using Self = INoxVeskClientAgent_impl;
  if (request->Interface() != INoxVeskClientAgentTable.m_Name) {
    return INoxObject_impl::CallMethod(request);
  }
  return CallOperation<INoxVeskClientAgentTable, &Self::AgentStart, &Self::AgentStop,
                       &Self::AgentRefresh, &Self::AgentQuery, &Self::AgentQueryUnload,
                       &Self::AgentInstall, &Self::AgentUninstall, &Self::AgentUpgrade>(*this,
                                                                                        *request);
}

}  // namespace Corvane::AgentInterfacesV3
