// Whether a lock is held, as a test sees it.
#pragma once

#include <BaseSDK/AMutex.h>

#include <chrono>
#include <future>

namespace TestSupport {

/// Asks from another thread, because the calling thread itself may hold the lock.
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

/// Whether `call` gets to its end on a thread of its own while the lock is held. It takes a
/// minute when it does not, and no time otherwise.
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
