#pragma once

#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/returns/TaskReturns.h"
#include "agent/daemon/store/TaskStore.h"

namespace NoxAgent {

/// Enables disabled tasks again when they are to come back. [main thread]
class TaskReturner {
 public:
  TaskReturner(const Plugins& plugins, const TaskStore& store, TaskReturns& returns);

  /// Enables those whose moment has come. Does nothing before the scheduler has read its task
  /// files. A task that cannot be enabled now, because its file cannot be written or was not read
  /// yet, stays to be tried again; one that is gone is forgotten. Never throws.
  void EnableDue(long now);
  /// For how long there is nothing to do, `most` at most; both in milliseconds.
  unsigned long Pause(long now, unsigned long most) const;

 private:
  void EnableAllDue(long now, Plugin& scheduler);
  bool Enable(Plugin& scheduler, const std::string& taskId) const;

  const Plugins& m_Plugins;
  const TaskStore& m_Store;
  TaskReturns& m_Returns;
  std::size_t m_Turn = 0;  ///< where among those that are due it goes on
};

}  // namespace NoxAgent
