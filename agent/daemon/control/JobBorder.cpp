#include "agent/daemon/control/JobBorder.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskIdCheck.h"

#include <algorithm>
#include <iterator>
#include <string_view>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;

namespace NoxAgent {
namespace {

struct Operation {
  std::string_view m_Name;
  bool m_IsOpenToAll;  // who may use the socket
};

// All that the handler finds a file by the task's ID for. Reading a job is not open to all, because
// its environment may hold secrets.
constexpr Operation Operations[] = {
    {"PutJob", false}, {"GetJob", false}, {"DeleteJob", false}, {"GetOutput", true}};

const Operation* Find(const AMsgIn& request) {
  if (request.Interface() != "INoxCommandHandler") {
    return nullptr;
  }
  const auto* const found =
      std::find_if(std::begin(Operations), std::end(Operations),
                   [&](const Operation& known) { return known.m_Name == request.Operation(); });
  return found == std::end(Operations) ? nullptr : found;
}

}  // namespace

void JobBorder::Check(const Caller& caller, const AMsgIn& request, const AString& extension) {
  const Operation* const operation = Find(request);
  if (operation == nullptr) {
    return;
  }
  if (!operation->m_IsOpenToAll && !caller.m_MayUseJobs) {
    throw RequestError(HttpStatus::Forbidden, "not-allowed",
                       "jobs are for root and the agent's own user, because a job runs with the "
                       "agent's rights; group_writes_jobs = yes in the agent's configuration opens "
                       "them to the members of socket_group");
  }
  CheckTaskId(std::get<AString>(*request.Find("taskId")), extension);
}

}  // namespace NoxAgent
