// Asks nox-simulate, the program that runs the real scheduler under virtual time.
#pragma once

#include "agent/library/Json.h"
#include "agent/simulation/SimulationRequest.h"

#include <vector>

namespace NoxAgent {

/// The lines of its answer. It works in this process's zone. CommandError (Failed) when it cannot
/// be run or reports an error. It is found beside this program, or in ../libexec from there.
std::vector<Json> AskSimulator(const SimulationRequest& request);

}  // namespace NoxAgent
