// How the agent is, for people.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace NoxAgent {

// The agent's status (GET /v1/status) as lines of text, its moments in local time (TZ). A member
// that is missing is shown as "-".
std::string StatusText(const nlohmann::json& status);

}  // namespace NoxAgent
