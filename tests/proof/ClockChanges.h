#pragma once

#include <vector>

/// The first moments of all settings of the local clock in the signed 32-bit range, and the last
/// moment of the range. The C library is asked at every `stride` seconds whether the clock has
/// another setting; what changes there and back in between is not seen.
std::vector<long> ClockChanges(long stride);
