#include "agent/daemon/control/DisableRoute.h"

#include "agent/daemon/control/ErrorAnswer.h"
#include "agent/daemon/control/RequestBody.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskIdCheck.h"
#include "agent/daemon/returns/SchedulerTasks.h"

#include <ctime>
#include <vector>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

TaskReturns::Ids TaskIdsIn(const RequestBody& body, const std::string& extension) {
  TaskReturns::Ids ids;
  for (const Json& item : body.Items("taskIds")) {
    if (!item.IsText()) {
      throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                         "\"taskIds\" is to be a list of strings");
    }
    CheckTaskId(AString::FromUtf8(item.Text()), AString::FromUtf8(extension));
    ids.push_back(item.Text());
  }
  return ids;
}

long MomentIn(const RequestBody& body) {
  const long moment = body.Number("until");
  if (moment <= static_cast<long>(std::time(nullptr))) {
    throw RequestError(HttpStatus::Unprocessable, "bad-moment",
                       "\"until\" is to be a moment to come, in seconds since the epoch");
  }
  return moment;
}

}  // namespace

DisableRoute::DisableRoute(const Plugins& plugins, const TaskStore& store, TaskReturns& returns)
    : m_Plugins(plugins), m_Store(store), m_Returns(returns) {}

Json DisableRoute::Answer(const std::string& body) {
  const std::shared_ptr<Plugin> scheduler = m_Plugins.Find(m_Store.Scheduler());
  if (m_Store.Files() == nullptr || scheduler == nullptr) {
    throw RequestError(HttpStatus::NotFound, "no-scheduler", "the agent has no task scheduler");
  }
  const RequestBody arguments(body, {"taskIds", "until"});
  const TaskReturns::Ids ids = TaskIdsIn(arguments, m_Store.Files()->Directory().Extension());
  const long until = MomentIn(arguments);
  AMutexGuard guard(m_Returns.ChangeLock());
  return DisableKnown(*scheduler, ids, until);
}

// That they come back is on the disk before the first one is disabled: whatever happens in between,
// none stays disabled for good.
Json DisableRoute::DisableKnown(Plugin& scheduler, const TaskReturns::Ids& taskIds, long until) {
  TaskReturns::Ids known;
  std::vector<bool> isKnown;
  for (const std::string& id : taskIds) {
    isKnown.push_back(HoldsTask(scheduler, AString::FromUtf8(id)));
    if (isKnown.back()) {
      known.push_back(id);
    }
  }
  m_Returns.Put(known, until);
  Json::List outcomes;
  for (std::size_t i = 0; i < taskIds.size(); ++i) {
    outcomes.push_back(Disable(scheduler, taskIds[i], isKnown[i]));
  }
  return {{"tasks", std::move(outcomes)}};
}

// One that cannot be disabled does not keep the others back.
Json DisableRoute::Disable(Plugin& scheduler, const std::string& taskId, bool isKnown) const {
  try {
    if (!isKnown) {
      throw RequestError(HttpStatus::NotFound, "unknown-task",
                         AString("the scheduler does not hold a task %1").Arg(taskId.c_str()));
    }
    SwitchTask(scheduler, *m_Store.Files(), AString::FromUtf8(taskId), false);
    return {{"taskId", taskId}};
  } catch (const std::exception&) {
    return {{"taskId", taskId}, {"error", ErrorJson(CaughtError("/v1/tasks/disable"))}};
  }
}

}  // namespace NoxAgent
