#pragma once

#include <BaseSDK/AMutex.h>

#include <condition_variable>
#include <cstdint>
#include <functional>

namespace NoxAgent {

/// Lets many threads share one flush (group commit): one of them flushes for all that wait, and
/// what comes meanwhile shares the next. [any thread]
class SharedFlush {
 public:
  /// There is one more change to flush. Call it when the next flush would find the change.
  void Count() NOX_EXCLUDES(m_Lock);
  /// Returns when all changes that were counted before the call are flushed. `flush` flushes those
  /// that it finds; it runs on one thread at a time, the caller's or another's, without a lock, and
  /// must not throw.
  void Share(const std::function<void()>& flush) NOX_EXCLUDES(m_Lock);

 private:
  BaseSDK::AMutex m_Lock;
  std::condition_variable_any m_Flushed;
  std::uint64_t m_Counted NOX_GUARDED_BY(m_Lock) = 0;
  std::uint64_t m_Covered NOX_GUARDED_BY(m_Lock) = 0;  ///< how many of them are flushed
  bool m_Flushing NOX_GUARDED_BY(m_Lock) = false;
};

}  // namespace NoxAgent
