// The requests of AgentApi::AddTasks, and what their answers say.
#pragma once

#include "agent/client/AgentApi.h"

#include <cstddef>
#include <span>
#include <string>

namespace NoxAgent {

struct AddBody {
  std::string m_Text;
  std::size_t m_Tasks = 0;  ///< so many of them it has
};

/// The body of a request for the first of the tasks: as many as it has room for, but for one at
/// least. REQUIRES: there is one.
AddBody BodyToAdd(std::span<const AgentApi::NewTask> tasks);

/// Throws TaskRefusal when the agent finds fault with one of the request's tasks, of which there
/// are so many; `first` is the first of them among all that are to be added.
void ThrowIfTaskRefused(const HttpResponse& response, std::size_t first, std::size_t tasks);

/// What became of a task.
AgentApi::AddedTask AddedTaskIn(const Json& outcome);

}  // namespace NoxAgent
