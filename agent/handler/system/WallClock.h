#pragma once

#include <chrono>

namespace NoxHandler {

/// Seconds since the epoch by the fine clock, which also drives timers. time() may lag it by a
/// tick.
inline long WallSeconds() {
  return static_cast<long>(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
}

}  // namespace NoxHandler
