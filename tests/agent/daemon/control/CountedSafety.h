#pragma once

#include <BaseSDK/AFileSystem.h>

#include <atomic>
#include <semaphore>

namespace NoxAgent {

/// Counts how often all is made safe, while it is in force.
class CountedSafety : public BaseSDK::AFileSystem {
 public:
  CountedSafety() : m_Before(Replace(this)) {}
  ~CountedSafety() override { (void)Replace(m_Before); }
  void MakeSafe() override { ++m_Count; }
  std::atomic<unsigned> m_Count{0};

 private:
  BaseSDK::AFileSystem* const m_Before;
};

/// Works at making all safe until it is let go, once for each time.
class HeldSafety : public CountedSafety {
 public:
  void MakeSafe() override {
    CountedSafety::MakeSafe();
    m_Begun.release();
    m_LetGo.acquire();
  }
  std::counting_semaphore<> m_Begun{0};
  std::counting_semaphore<> m_LetGo{0};
};

}  // namespace NoxAgent
