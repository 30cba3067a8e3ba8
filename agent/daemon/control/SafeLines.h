#pragma once

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>

#include <boost/asio/thread_pool.hpp>

#include <atomic>
#include <functional>
#include <string>

namespace NoxAgent {

/// Lines for clients, passed on when no power cut can undo what they tell (AFileSystem::MakeSafe).
///
/// Those that come while the disk is at work, or within a tenth of a second after it, wait for each
/// other. So a burst shares a few flushes, and nobody who watches sees the difference.
class SafeLines {
 public:
  /// `passOn` takes lines that came one after the other, and is called in their order on a thread
  /// of this object's.
  explicit SafeLines(std::function<void(std::string lines)> passOn);
  SafeLines(const SafeLines&) = delete;
  SafeLines& operator=(const SafeLines&) = delete;
  /// Passes on what waits.
  ~SafeLines();

  /// Waits for the disk when very many lines wait for it already. [one thread]
  void Add(const std::string& line) NOX_EXCLUDES(m_Lock);
  /// Calls `then` on that thread, behind the lines so far. From now on no line waits for others.
  /// [any thread]
  void Finish(std::function<void()> then);

 private:
  static constexpr unsigned MostWaiting = 1000;
  static constexpr unsigned long PauseMilliseconds = 100;

  void PassOn() NOX_EXCLUDES(m_Lock);

  const std::function<void(std::string lines)> m_PassOn;
  std::atomic<bool> m_IsFinishing{false};
  BaseSDK::AEvent m_GoOn{BaseSDK::AEvent::AutoReset};  ///< ends the pause
  BaseSDK::AMutex m_Lock;
  std::string m_Waiting NOX_GUARDED_BY(m_Lock);
  std::atomic<unsigned> m_Count{0};  ///< of the lines in m_Waiting; changed under the lock
  boost::asio::thread_pool m_Thread{1};
};

}  // namespace NoxAgent
