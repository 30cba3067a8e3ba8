#pragma once

#include <BaseSDK/AThread.h>

#include <functional>
#include <thread>
#include <utility>

namespace TestSupport {

/// Runs `body` on a thread of its own from construction on; the destructor waits for its end.
class BodyThread : public BaseSDK::AThread {
 public:
  explicit BodyThread(std::function<void()> body) : m_Body(std::move(body)) { (void)Start(); }
  ~BodyThread() override { Join(); }

  void Run() override { m_Body(); }
  /// Real waiting: the body must be on its way out, or able to get there without this thread.
  void Join() const {
    while (IsRunning()) {
      std::this_thread::yield();
    }
  }

 private:
  std::function<void()> m_Body;
};

}  // namespace TestSupport
