#pragma once

#include "agent/library/Json.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// The next runs of a task that is not there yet, as the scheduler itself has them when it is added
/// at `now`: at most `count`, in seconds since the epoch. Local time is that of the process (TZ).
std::vector<long> ComingRuns(const std::string& taskXml, long now, unsigned count);

}  // namespace NoxAgent
