// Lengths of time in seconds.
#pragma once

namespace NoxAgent {

inline constexpr long MinuteSeconds = 60;
inline constexpr long HourSeconds = 3600;
inline constexpr long DaySeconds = 86400;

}  // namespace NoxAgent
