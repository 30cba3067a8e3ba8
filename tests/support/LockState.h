// Whether a lock is held, as a test sees it.
#pragma once

#include <BaseSDK/AMutex.h>

#include <chrono>
#include <future>

namespace TestSupport {

/// Asks from a thread of its own: the one that asks may hold it.
inline bool IsFree(BaseSDK::AMutex& lock) {
  return std::async(std::launch::async,
                    [&lock] {
                      if (!lock.TryLock()) {
                        return false;
                      }
                      lock.Unlock();
                      return true;
                    })
      .get();
}

/// Whether `call` gets to its end on a thread of its own while the lock is held. It takes a minute
/// to find that out only when it does not.
template <class Call>
bool RunsWhileHeld(BaseSDK::AMutex& lock, const Call& call) {
  std::future<void> running;
  bool runs = false;
  {
    const BaseSDK::AMutexGuard guard(lock);
    running = std::async(std::launch::async, call);
    runs = running.wait_for(std::chrono::minutes(1)) == std::future_status::ready;
  }
  running.get();
  return runs;
}

}  // namespace TestSupport
