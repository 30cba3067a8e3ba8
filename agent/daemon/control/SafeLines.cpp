#include "agent/daemon/control/SafeLines.h"

#include <BaseSDK/AFileSystem.h>

#include <boost/asio/post.hpp>

#include <utility>

using BaseSDK::AMutexGuard;

namespace NoxAgent {

SafeLines::SafeLines(std::function<void(std::string lines)> passOn) : m_PassOn(std::move(passOn)) {}

SafeLines::~SafeLines() {
  Finish([] {});
  m_Thread.join();
}

void SafeLines::Add(const std::string& line) {
  m_Count.wait(MostWaiting);
  AMutexGuard guard(m_Lock);
  m_Waiting += line;
  if (m_Count == 0) {
    boost::asio::post(m_Thread, [this] { PassOn(); });
  }
  if (++m_Count == MostWaiting / 2) {
    (void)m_GoOn.Set();
  }
}

void SafeLines::Finish(std::function<void()> then) {
  m_IsFinishing = true;
  (void)m_GoOn.Set();
  boost::asio::post(m_Thread, std::move(then));
}

void SafeLines::PassOn() {
  std::string lines;
  {
    AMutexGuard guard(m_Lock);
    lines.swap(m_Waiting);
    m_Count = 0;
  }
  m_Count.notify_all();
  // Behind the lock: what comes meanwhile may tell of changes that this does not make safe.
  BaseSDK::AFileSystem::Current().MakeSafe();
  m_PassOn(std::move(lines));
  if (!m_IsFinishing) {
    (void)m_GoOn.Wait(PauseMilliseconds, BaseSDK::ClockSkewIgnore);
  }
}

}  // namespace NoxAgent
