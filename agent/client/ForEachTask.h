#pragma once

#include "agent/client/CommandContext.h"

#include <functional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Does `act` with each task, and prints for which it was done: "`done` ID". What it throws as a
/// CommandError is reported, and the other tasks go on, unless the agent cannot be reached any
/// more.
void ForEachTask(const std::vector<std::string>& ids, const char* done,
                 const std::function<void(const std::string&)>& act, CommandContext& context);

}  // namespace NoxAgent
