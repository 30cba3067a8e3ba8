#pragma once

#include "agent/daemon/control/BodyParts.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/store/TaskGlances.h"
#include "agent/daemon/store/TaskStore.h"

namespace NoxAgent {

/// The route GET /v1/tasks: all tasks in one answer. docs/http.md describes it.
///
/// Any number of threads may ask at once.
class TasksRoute {
 public:
  TasksRoute(const Plugins& plugins, const TaskStore& store);

  /// A line of JSON for each task of the scheduler, in the order of the IDs; with the scheduler's
  /// attributes when asked. Throws RequestError,
  /// and so do the parts.
  BodyParts List(bool withAttributes);

 private:
  const Plugins& m_Plugins;
  const TaskStore& m_Store;
  TaskGlances m_Glances;
};

}  // namespace NoxAgent
