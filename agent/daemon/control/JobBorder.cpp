#include "agent/daemon/control/JobBorder.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskIdCheck.h"

#include <algorithm>
#include <iterator>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;

namespace NoxAgent {
namespace {

// What is not open to everybody who may use the socket. Reading is not, because a job's environment
// may hold secrets.
constexpr const char* OperationsOnJobs[] = {"PutJob", "GetJob", "DeleteJob"};

bool IsAboutJob(const AMsgIn& request) {
  return request.Interface() == "INoxCommandHandler" &&
         std::find(std::begin(OperationsOnJobs), std::end(OperationsOnJobs), request.Operation()) !=
             std::end(OperationsOnJobs);
}

}  // namespace

void JobBorder::Check(const Caller& caller, const AMsgIn& request, const AString& extension) {
  if (!IsAboutJob(request)) {
    return;
  }
  if (!caller.m_MayUseJobs) {
    throw RequestError(HttpStatus::Forbidden, "not-allowed",
                       "jobs are for root and the agent's own user, because a job runs with the "
                       "agent's rights; group_writes_jobs = yes in the agent's configuration opens "
                       "them to the members of socket_group");
  }
  CheckTaskId(std::get<AString>(*request.Find("taskId")), extension);
}

}  // namespace NoxAgent
