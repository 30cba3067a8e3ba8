// Asks nox-simulate, the program that runs the real scheduler under virtual time.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "agent/simulation/SimulationRequest.h"

namespace NoxAgent {

// The lines of its answer. It works in this process's zone. CommandError (Failed) when it cannot be
// run or reports an error. It is found beside this program, or in ../libexec from there.
std::vector<nlohmann::json> AskSimulator(const SimulationRequest& request);

}  // namespace NoxAgent
