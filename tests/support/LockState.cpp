#include "tests/support/LockState.h"

#include <chrono>
#include <future>

namespace TestSupport {

bool IsFree(BaseSDK::AMutex& lock) {
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

bool RunsWhileHeld(BaseSDK::AMutex& lock, const std::function<void()>& call) {
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
