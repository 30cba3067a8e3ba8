#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// When a run must end that is to be killed at the end of its active period. The scheduler only
/// says that a run is to be killed; the time comes from the task's document.
///
/// Triggers with KillAtEnd, a Duration and a readable begin date count. Their active periods are
/// [S, S + Duration] for each start S. If the run starts within periods of several triggers, the
/// trigger that was due last before that decides; of two due at once, the one that ends earlier. If
/// the run starts in no period, as a late one does, it gets a whole Duration from its own start,
/// the shortest one of these triggers.
struct ActivePeriod {
  /// In seconds since the epoch, by the local time of TZ; nothing when the document sets no end.
  static std::optional<long> EndFor(const BaseSDK::AString& taskXml, long runStart);
};

}  // namespace NoxHandler
