#pragma once

#include <BaseSDK/AString.h>

namespace AgentSDK {

/// A plug-in's way to the agent's notifications: a number with a text, posted by one plug-in and
/// delivered to all that subscribed to the number. [any thread]
struct NTracker {
  NTracker() = delete;

  /// Has the `count` notifications `codes` delivered to the plug-in that calls itself `subscriber`,
  /// as INoxObject's NotifyObject of kind 10. At least 1 when subscribed; negative without a host.
  static long Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count);

  /// Posts a notification to its subscribers. At least 1 when the host took it; negative without a
  /// host. It is never delivered on the calling thread, so the caller may hold locks.
  static long PostNotification(long code, const BaseSDK::AString& text);
};

}  // namespace AgentSDK
