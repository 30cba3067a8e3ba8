#include "agent/daemon/journal/SharedFlush.h"

#include <BaseSDK/AWaitableLock.h>

using BaseSDK::AMutexGuard;
using BaseSDK::AWaitableLock;

namespace NoxAgent {

void SharedFlush::Count() {
  AMutexGuard guard(m_Lock);
  ++m_Counted;
}

void SharedFlush::Share(const std::function<void()>& flush) {
  AMutexGuard guard(m_Lock);
  AWaitableLock lock(m_Lock);
  const std::uint64_t own = m_Counted;
  while (m_Covered < own) {
    if (m_Flushing) {
      m_Flushed.wait(lock);
      continue;
    }
    m_Flushing = true;
    const std::uint64_t counted = m_Counted;
    lock.unlock();
    flush();
    lock.lock();
    m_Covered = counted;
    m_Flushing = false;
    m_Flushed.notify_all();
  }
}

}  // namespace NoxAgent
