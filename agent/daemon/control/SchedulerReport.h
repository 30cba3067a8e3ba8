#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NoxAgent {

/// What the scheduler says of itself, taken apart: a heading and a line for each task in memory,
/// then whether it runs tasks. The heading says "running", but the list is of all tasks.
struct SchedulerReport {
  /// Of any other report the whole text is the rest.
  explicit SchedulerReport(std::string_view report);

  bool m_IsOne = false;                ///< it has the heading
  std::vector<std::string> m_TaskIds;  ///< of all tasks in memory
  std::string m_Rest;                  ///< without heading and list
};

}  // namespace NoxAgent
