// Whether a lock is held, as a test sees it.
#pragma once

#include <BaseSDK/AMutex.h>

#include <future>

namespace TestSupport {

/// Asks from a thread of its own: the one that asks may hold it.
inline bool IsFree(BaseSDK::AMutex& lock) {
  return std::async(std::launch::async,
                    [&lock] {
                      if (!lock.TryLock()) return false;
                      lock.Unlock();
                      return true;
                    })
      .get();
}

}  // namespace TestSupport
