// Moments as people read them.
#pragma once

#include "agent/library/Json.h"

#include <chrono>
#include <string>

namespace NoxAgent {

/// "2026-11-21 08:00:00 +0100": local time (TZ) with its distance from UTC.
std::string LocalTimeText(long seconds);
/// {"seconds": ..., "local": ...}; null unless it is after the epoch.
Json MomentOrNull(long seconds);

/// "January" for 0, as struct tm counts months.
const char* MonthName(int month);

/// "0.4 s", "12 s", "3 min 5 s", "2 h 10 min", "3 d 4 h": the two largest units.
std::string DurationText(std::chrono::milliseconds duration);

}  // namespace NoxAgent
