#pragma once

#include <BaseSDK/AMutex.h>

namespace BaseSDK {

/// Lets a std::condition_variable_any release and take back a lock that a guard of the caller
/// holds: `AMutexGuard guard(m_Lock); AWaitableLock lock(m_Lock); m_Changed.wait(lock);`
class AWaitableLock {
 public:
  /// REQUIRES: an AMutexGuard of the caller holds `mutex`, and goes on holding it after the wait.
  explicit AWaitableLock(AMutex& mutex) : m_Mutex(mutex) {}

  void lock() NOX_NO_THREAD_SAFETY_ANALYSIS { m_Mutex.Lock(); }
  void unlock() NOX_NO_THREAD_SAFETY_ANALYSIS { m_Mutex.Unlock(); }

 private:
  AMutex& m_Mutex;
};

}  // namespace BaseSDK
