#pragma once

#include <AgentSDK/NTracker.h>
#include <BaseSDK/AString.h>

namespace Nox {

// The agent's notifications by their codes.

// The scheduler posts these; the text is the task's ID.
constexpr long TaskChanged = 100;  ///< the document was replaced, or the next run has moved
constexpr long TaskDeleted = 101;
constexpr long TaskAdded = 102;

// The scheduler subscribes to these. What they announce is the host's business; a trigger of type 7
// waits for 300, a trigger of type 6 for 302.
constexpr long SecondEvent = 300;
constexpr long FirstEvent = 302;

/// Tells the agent of a change. The change stands even if the agent does not hear of it: a refusal
/// or an exception, as when memory runs out, does not reach the caller. [any thread, locks may be
/// held]
inline void Announce(long code, const BaseSDK::AString& taskID) noexcept {
  try {
    (void)AgentSDK::NTracker::PostNotification(code, taskID);
  } catch (...) {
  }
}

}  // namespace Nox
