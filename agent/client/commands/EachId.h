// What commands for several tasks share.
#pragma once

#include "agent/client/CommandContext.h"

#include <functional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Does `act` with each task, and then hands those for which it went well to `tell`. A failure is
/// reported, and the other tasks go on, unless the agent cannot be reached any more.
void ForEachId(const std::vector<std::string>& ids,
               const std::function<void(const std::string&)>& act,
               const std::function<void(const std::vector<std::string>&)>& tell,
               CommandContext& context);

/// Prints "done ID" for each, or {"done": [ids]}.
void PrintDone(const std::vector<std::string>& ids, const char* done,
               const CommandContext& context);

/// Throws CommandError: the scheduler does not have the task in memory.
[[noreturn]] void FailNotLoaded(const std::string& id);

}  // namespace NoxAgent
