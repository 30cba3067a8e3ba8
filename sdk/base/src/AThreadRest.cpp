#include <BaseSDK/AMutex.h>
#include <BaseSDK/AThreadRest.h>
#include <BaseSDK/AWaitableLock.h>

#include <chrono>
#include <condition_variable>
#include <utility>

namespace BaseSDK {

namespace {

thread_local bool atWork = false;

class AWorkCount {
 public:
  /// Never destroyed: threads may outlive main.
  static AWorkCount& Instance() {
    static AWorkCount& count = *new AWorkCount;
    return count;
  }

  void Add() NOX_EXCLUDES(m_Lock) {
    const AMutexGuard guard(m_Lock);
    ++m_AtWork;
  }
  void Remove() NOX_EXCLUDES(m_Lock) {
    const AMutexGuard guard(m_Lock);
    if (--m_AtWork == 0) {
      m_AllRest.notify_all();
    }
  }
  bool WaitForNone(unsigned long milliseconds) NOX_EXCLUDES(m_Lock) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    const AMutexGuard guard(m_Lock);
    AWaitableLock lock(m_Lock);
    while (m_AtWork != 0) {
      if (m_AllRest.wait_until(lock, deadline) == std::cv_status::timeout) {
        return m_AtWork == 0;
      }
    }
    return true;
  }

 private:
  AMutex m_Lock;
  std::condition_variable_any m_AllRest;
  unsigned m_AtWork NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace

AThreadRest::AThreadRest() : m_WasAtWork(std::exchange(atWork, false)) {
  if (m_WasAtWork) {
    AWorkCount::Instance().Remove();
  }
}

AThreadRest::~AThreadRest() {
  if (m_WasAtWork) {
    AWorkCount::Instance().Add();
    atWork = true;
  }
}

bool AThreadRest::WaitForAll(unsigned long milliseconds) {
  return AWorkCount::Instance().WaitForNone(milliseconds);
}

void AThreadRest::OnStart() {
  AWorkCount::Instance().Add();
}

void AThreadRest::OnEnter() {
  atWork = true;
}

void AThreadRest::OnEnd() {
  atWork = false;
  AWorkCount::Instance().Remove();
}

}  // namespace BaseSDK
