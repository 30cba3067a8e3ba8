#pragma once

#include "agent/client/CommandContext.h"
#include "agent/client/LiveTask.h"
#include "agent/simulation/SimulationRequest.h"

#include <BaseSDK/AString.h>

#include <string>
#include <vector>

namespace NoxAgent {

/// Reads a file, or standard input for "-". The task's ID is the file's name without its extension,
/// "task" for standard input. CommandError (Usage) when it cannot be read, is no task document, or
/// its name is no task ID.
SimulationRequest::Document ReadTaskFile(const std::string& file, const CommandContext& context);

/// The task that a command is about.
struct TaskSource {
  SimulationRequest::Document m_Document;
  std::optional<LiveTask> m_Live;  ///< of a task of the agent's
};

/// `name` is a file if there is one of that name or it holds a slash; else it is the ID of one of
/// the agent's tasks.
TaskSource FindTask(const std::string& name, const CommandContext& context);

}  // namespace NoxAgent
