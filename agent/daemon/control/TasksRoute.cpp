#include "agent/daemon/control/TasksRoute.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskLines.h"

#include <memory>

namespace NoxAgent {

TasksRoute::TasksRoute(const Plugins& plugins, const TaskStore& store)
    : m_Plugins(plugins), m_Store(store) {}

BodyParts TasksRoute::List(bool withAttributes) {
  const std::shared_ptr<Plugin> scheduler = m_Plugins.Find(m_Store.Scheduler());
  if (m_Store.Files() == nullptr || scheduler == nullptr) {
    throw RequestError(HttpStatus::NotFound, "no-scheduler", "the agent has no task scheduler");
  }
  const auto lines = std::make_shared<TaskLines>(
      TaskLines::Parts{m_Plugins, scheduler, *m_Store.Files(), m_Glances}, withAttributes);
  return [lines] { return lines->Next(); };
}

}  // namespace NoxAgent
