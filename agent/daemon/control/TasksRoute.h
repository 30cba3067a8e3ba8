#pragma once

#include "agent/daemon/control/BodyParts.h"
#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/control/TaskLines.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/returns/TaskReturns.h"
#include "agent/daemon/store/TaskGlances.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <memory>
#include <string>

namespace NoxAgent {

/// The routes GET /v1/tasks, all tasks in one answer or a single one, and POST /v1/tasks/add, many
/// new ones in one request. docs/http.md describes them.
///
/// Any number of threads may ask at once.
class TasksRoute {
 public:
  TasksRoute(const Plugins& plugins, const TaskStore& store, OperationRoute& operations,
             const TaskReturns& returns);

  /// A line of JSON for each task of the scheduler, in the order of the IDs; with the scheduler's
  /// attributes when asked. Throws RequestError, and so do the parts.
  BodyParts List(bool withAttributes);
  /// The line of this task alone; nothing when there is no such task. Throws RequestError, also
  /// when the ID can be no task's, and so do the parts.
  BodyParts One(const std::string& taskId);

  /// Adds the tasks of {"tasks": [{"taskId", "taskXml", "replaces"}, ...]}, in their order, after
  /// all of them have passed the border; one that "replaces" a document, only while that is the
  /// task's. {"tasks": [...]} with what became of each. Throws RequestError, OfTask where one task
  /// is to blame; nothing was added then.
  Json Add(const std::string& body, bool force);

 private:
  /// Throws RequestError when there is none.
  std::shared_ptr<Plugin> Scheduler() const;
  /// What lines are made with. Throws as Scheduler does.
  TaskLines::Parts Parts();

  const Plugins& m_Plugins;
  const TaskStore& m_Store;
  OperationRoute& m_Operations;
  const TaskReturns& m_Returns;
  TaskGlances m_Glances;
};

}  // namespace NoxAgent
