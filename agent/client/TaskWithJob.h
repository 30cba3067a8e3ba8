#pragma once

#include "agent/client/AgentApi.h"

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// A task with its job, on the way to the agent.
struct TaskWithJob {
  std::string m_Id;
  std::string m_Document;                      ///< in ASCII
  std::optional<std::string> m_Job;            ///< nothing: the job is left as it is
  std::optional<std::string> m_Replaces = {};  ///< as of AgentApi::NewTask
};

/// Writes the job, then the task, and takes the job back when the task is refused: afterwards the
/// agent has both or what it had before. Returns the agent's warnings. CommandError as AgentApi
/// throws it; one more sentence when the job could not be taken back.
std::vector<std::string> AddWithJob(AgentApi& agent, const TaskWithJob& task);

}  // namespace NoxAgent
