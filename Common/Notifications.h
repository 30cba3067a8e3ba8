#pragma once

#include <AgentSDK/NTracker.h>
#include <BaseSDK/AString.h>

namespace Nox {

// The agent's notifications by their codes.

// Posted, with the task ID.
constexpr long TaskChanged = 100;  ///< the document was replaced, or the next run has moved
constexpr long TaskDeleted = 101;
constexpr long TaskAdded = 102;

// Subscribed to. What they announce is the host's; a trigger of type 7 waits for the one, of type 6
// for the other.
constexpr long SecondEvent = 300;
constexpr long FirstEvent = 302;

/// Tells the agent of a change. The change stands whatever becomes of the news: neither a refusal
/// nor an exception, such as for want of memory, gets to the caller. [any thread, locks may be
/// held]
inline void Announce(long code, const BaseSDK::AString& taskID) noexcept {
  try {
    (void)AgentSDK::NTracker::PostNotification(code, taskID);
  } catch (...) {
  }
}

}  // namespace Nox
