#pragma once

#include "agent/client/CommandContext.h"
#include "agent/client/LiveTask.h"
#include "agent/simulation/SimulationRequest.h"

#include <BaseSDK/AString.h>

#include <string>
#include <vector>

namespace NoxAgent {

/// Reads a task document from a file, or from standard input for "-". The task's ID is the file's
/// name without its extension, and "task" for standard input. Throws CommandError (Usage) when the
/// file cannot be read or is no task document, or when its name is no task ID.
SimulationRequest::Document ReadTaskFile(const std::string& file, const CommandContext& context);

/// The task that a command is about: a file's, or one of the agent's.
struct TaskSource {
  SimulationRequest::Document m_Document;
  std::optional<LiveTask> m_Live;  ///< what the agent knows of it; nothing for a file
};

/// Finds the task. `name` means a file when there is one of that name or when it holds a slash;
/// otherwise it is the ID of one of the agent's tasks.
TaskSource FindTask(const std::string& name, const CommandContext& context);

}  // namespace NoxAgent
