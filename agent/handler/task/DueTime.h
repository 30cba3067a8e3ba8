#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// What a task's document says about when it was due. The scheduler only says that a run is late,
/// not how late.
struct DueTime {
  /// The last moment at or before `moment` at which a trigger of the task started, repeated or
  /// began, in seconds since the epoch, by the local time of TZ. A start is sought for `seconds`
  /// before, and a day; nothing when there is none, or no document.
  static std::optional<long> LastBefore(const BaseSDK::AString& taskXml, long moment, long seconds);
};

}  // namespace NoxHandler
