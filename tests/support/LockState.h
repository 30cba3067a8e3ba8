// Whether a lock is held, as a test sees it.
#pragma once

#include <BaseSDK/AMutex.h>

#include <functional>

namespace TestSupport {

/// Asks from another thread, because the calling thread itself may hold the lock.
bool IsFree(BaseSDK::AMutex& lock);

/// Whether `call` gets to its end on a thread of its own while the lock is held. It takes a
/// minute when it does not, and no time otherwise.
bool RunsWhileHeld(BaseSDK::AMutex& lock, const std::function<void()>& call);

}  // namespace TestSupport
