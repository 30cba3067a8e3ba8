#pragma once

#include <BaseSDK/AString.h>

#include <chrono>
#include <string>

namespace NoxHandler {

/// Spreads the starts of tasks that are due at the same moment, on one machine or on many.
struct Splay {
  /// The task's share of `seconds`, from 0 on and below it. It is always the same for a task on a
  /// machine, and the shares of different ones lie evenly.
  static std::chrono::milliseconds ShareOf(long seconds, const std::string& machineId,
                                           const BaseSDK::AString& taskId);
};

}  // namespace NoxHandler
