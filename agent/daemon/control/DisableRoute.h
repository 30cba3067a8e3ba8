#pragma once

#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/returns/TaskReturns.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <memory>
#include <string>

namespace NoxAgent {

/// The route POST /v1/tasks/disable: tasks are disabled until a moment, and come back by
/// themselves. docs/http.md describes it.
///
/// Any number of threads may ask at once.
class DisableRoute {
 public:
  DisableRoute(const Plugins& plugins, const TaskStore& store, TaskReturns& returns);

  /// Disables the tasks of {"taskIds": [...], "until": seconds since the epoch}. {"tasks": [...]}
  /// with what became of each, in their order. Throws RequestError; nothing was disabled then.
  Json Answer(const std::string& body);

 private:
  Json DisableKnown(Plugin& scheduler, const TaskReturns::Ids& taskIds, long until);
  Json Disable(Plugin& scheduler, const std::string& taskId, bool isKnown) const;

  const Plugins& m_Plugins;
  const TaskStore& m_Store;
  TaskReturns& m_Returns;
};

}  // namespace NoxAgent
