#pragma once

#include <BaseSDK/ThreadAnnotations.h>

#include <mutex>

namespace BaseSDK {

/// A lock, not recursive. Take it through AMutexGuard; name what it guards with NOX_GUARDED_BY.
class NOX_CAPABILITY("mutex") AMutex {
 public:
  AMutex() = default;
  AMutex(const AMutex&) = delete;
  AMutex& operator=(const AMutex&) = delete;

  /// Waits until no other thread holds the lock. The calling thread must not hold it.
  void Lock() NOX_ACQUIRE() { m_Mutex.lock(); }
  /// Does not wait; true when the lock is held now.
  bool TryLock() NOX_TRY_ACQUIRE(true) { return m_Mutex.try_lock(); }
  void Unlock() NOX_RELEASE() { m_Mutex.unlock(); }

 private:
  std::mutex m_Mutex;
};

/// Holds the lock from construction to destruction, on every path out of the scope.
class NOX_SCOPED_CAPABILITY AMutexGuard {
 public:
  explicit AMutexGuard(AMutex& mutex) NOX_ACQUIRE(mutex) : m_Mutex(mutex) { m_Mutex.Lock(); }
  AMutexGuard(const AMutexGuard&) = delete;
  AMutexGuard& operator=(const AMutexGuard&) = delete;
  ~AMutexGuard() NOX_RELEASE() { m_Mutex.Unlock(); }

 private:
  AMutex& m_Mutex;
};

}  // namespace BaseSDK
