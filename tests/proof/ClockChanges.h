#pragma once

#include <vector>

/// What the C library says of the local clock at a moment.
struct ClockSetting {
  long m_OffsetFromUtc = 0;
  int m_IsDaylight = 0;
  bool operator==(const ClockSetting&) const = default;
};
ClockSetting ClockSettingAt(long moment);

/// The first moments of other settings of the local clock after `first` and until `last`. The C
/// library is asked at every `stride` seconds whether the clock has another setting; what changes
/// there and back in between is not seen.
std::vector<long> ClockChanges(long first, long last, long stride);

/// The changes in the signed 32-bit range, with its first and last moment.
std::vector<long> ClockChangesOf32Bits(long stride);
