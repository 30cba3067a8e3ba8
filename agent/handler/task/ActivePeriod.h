#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// When a run that is to be killed at the end of its active period has to end. The scheduler says
/// that a run is to be killed, not when; the task's document does.
///
/// Only triggers with KillAtEnd, a Duration and a readable begin count. Of those whose active
/// period [S, S + Duration] holds the start of the run, the one that was due last before it decides
/// (the earlier end of two). When the run starts after the period, as a late one does, it gets a
/// whole Duration from its own start.
struct ActivePeriod {
  /// Seconds since the epoch, by the local time of TZ; empty when the document sets no end.
  static std::optional<long> EndFor(const BaseSDK::AString& taskXml, long runStart);
};

}  // namespace NoxHandler
