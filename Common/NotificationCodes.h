#pragma once

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

}  // namespace Nox
