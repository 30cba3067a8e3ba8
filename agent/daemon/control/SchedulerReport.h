#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NoxAgent {

/// The scheduler's report on itself (ObjectDebugInfo), taken apart. It has a heading, a line for
/// each task in memory, and at last whether the scheduler runs tasks. The heading says "running",
/// but the list has all tasks.
struct SchedulerReport {
  /// Reads the report. When it does not come from a scheduler, all of it becomes m_Rest.
  explicit SchedulerReport(std::string_view report);

  bool m_IsOne = false;                ///< it has the heading
  std::vector<std::string> m_TaskIds;  ///< of all tasks in memory
  std::string m_Rest;                  ///< without heading and list
};

}  // namespace NoxAgent
