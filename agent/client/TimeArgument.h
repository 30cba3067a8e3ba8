// Moments as they are written on the command line, in local time.
#pragma once

#include "agent/simulation/SimulationRequest.h"

#include <string>
#include <utility>

namespace NoxAgent {

// Each of these ends in a CommandError (Usage) that names `option` when the text is something else.

/// "2024-03-10 08:30:00", with "T" instead of the blank, without the seconds, or the date alone
/// (midnight): seconds since the epoch.
long ReadTime(const std::string& option, const std::string& text);
/// "90s", "10m", "2h", "3d", or several of these in a row: seconds, more than 0.
long ReadDuration(const std::string& option, const std::string& text);
/// "A..B", two of these, the second later.
SimulationRequest::Span ReadSpan(const std::string& option, const std::string& text);
/// "AT=+SECONDS" or "AT=-SECONDS".
SimulationRequest::ClockStep ReadClockStep(const std::string& option, const std::string& text);

}  // namespace NoxAgent
