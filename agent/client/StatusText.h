// How the agent is, for people.
#pragma once

#include "agent/library/Json.h"

#include <string>

namespace NoxAgent {

/// The agent's status (GET /v1/status) as lines of text, its moments in local time (TZ). A member
/// that is missing is shown as "-".
std::string StatusText(const Json& status);

}  // namespace NoxAgent
