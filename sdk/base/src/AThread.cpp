#include <BaseSDK/AThread.h>
#include <BaseSDK/AThreadRest.h>
#include <BaseSDK/ThreadHooks.h>

#include <atomic>
#include <exception>
#include <thread>

namespace BaseSDK {

struct AThread::State {
  std::atomic<bool> m_Running{false};
  std::thread m_Thread;  ///< touched by the owner only
};

AThread::AThread() : m_State(std::make_shared<State>()) {}

AThread::~AThread() {
  if (!m_State->m_Thread.joinable()) {
    return;
  }
  if (IsRunning()) {
    m_State->m_Thread.detach();
  } else {
    m_State->m_Thread.join();
  }
}

bool AThread::Start() {
  if (IsRunning()) {
    return false;
  }
  if (m_State->m_Thread.joinable()) {
    m_State->m_Thread.join();
  }
  m_State->m_Running = true;
  Platform::OnThreadStart();
  AThreadRest::OnStart();
  try {
    // The thread holds the state itself: it may outlive this object, though Run may not.
    m_State->m_Thread = std::thread([this, state = m_State] {
      Platform::OnThreadEnter();
      AThreadRest::OnEnter();
      Run();
      state->m_Running = false;
      AThreadRest::OnEnd();
      Platform::OnThreadEnd();
    });
  } catch (const std::exception&) {
    m_State->m_Running = false;
    AThreadRest::OnEnd();
    Platform::OnThreadEnd();
    return false;
  }
  return true;
}

bool AThread::IsRunning() const {
  return m_State->m_Running;
}

}  // namespace BaseSDK
