#pragma once

#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/returns/TaskReturns.h"
#include "agent/daemon/store/StoreFileSystem.h"
#include "agent/daemon/store/TaskGlances.h"
#include "agent/library/Json.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Tells of the tasks of a scheduler, of all one after the other or of a single one, a line of JSON
/// for each: what its document says, what the scheduler has in memory, and what its handler knows
/// of the latest run. One thread at a time.
class TaskLines {
 public:
  /// What it works with. All but the scheduler are borrowed and outlive it.
  struct Parts {
    const Plugins& m_Plugins;
    std::shared_ptr<Plugin> m_Scheduler;
    StoreFileSystem& m_Files;  ///< the scheduler's
    TaskGlances& m_Glances;
    const TaskReturns& m_Returns;
  };

  /// Asks the scheduler which tasks there are. With attributes, each line has all that the
  /// scheduler reports. Throws RequestError.
  TaskLines(Parts parts, bool withAttributes);
  /// Of this task alone, if there is one.
  TaskLines(Parts parts, const BaseSDK::AString& taskId);

  /// The lines of the next tasks, some ten thousand bytes together; empty at the end. A task that
  /// is gone by now is left out. Throws RequestError.
  std::string Next();

 private:
  std::string LineOf(const BaseSDK::AString& taskId);
  /// What is known of a task besides its document.
  Json ReportOn(const BaseSDK::AString& taskId);
  void AddRun(const BaseSDK::AString& taskId, const BaseSDK::AString& classId, Json& line);
  /// The condition of the task's file; nothing when it does not tell whether the document changes.
  std::optional<FileIdentity> ConditionOf(const BaseSDK::AString& taskId) const;
  /// What the task's file says; nothing when there is no such task.
  std::optional<TaskGlance> DocumentOf(const BaseSDK::AString& taskId);
  Plugin* HandlerOf(const BaseSDK::AString& classId);

  const Parts m_Parts;
  const bool m_WithAttributes;
  std::vector<BaseSDK::AString> m_Ids;
  std::size_t m_Next = 0;

  // Of the task before: most tasks have the same handler.
  BaseSDK::AString m_HandlerId;
  std::shared_ptr<Plugin> m_Handler;  ///< null when it knows nothing of runs
};

}  // namespace NoxAgent
