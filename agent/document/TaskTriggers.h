#pragma once

#include "agent/schedule/TriggerRule.h"

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// The triggers of a task document in its order, as the scheduler reads them; nothing for one that
/// never fires. The document is well formed; local time is that of the process (TZ).
std::vector<std::optional<TriggerRule>> ReadTriggerRules(const std::string& taskXml);

}  // namespace NoxAgent
