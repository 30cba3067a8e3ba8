#pragma once

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>

namespace NoxAgent {

/// The agent's own thread. All NotifyObject calls to plug-ins are made on it, one at a time and in
/// order. The callers of Post may hold locks that a plug-in takes when it is told; on their own
/// thread that would be a deadlock.
class AgentThread {
 public:
  using Job = std::function<void()>;

  /// Post refuses jobs beyond this number; so many wait only when a plug-in keeps the thread busy
  /// for long.
  static constexpr std::size_t MaxWaiting = 100000;

  /// Throws std::system_error when the system has no thread to give.
  AgentThread();
  AgentThread(const AgentThread&) = delete;
  AgentThread& operator=(const AgentThread&) = delete;
  /// Does what is waiting, then ends the thread.
  ~AgentThread();

  /// Does `job` on the agent thread, after all that came before. False when too many are waiting.
  /// `job` must not throw. [any thread]
  bool Post(Job job) NOX_EXCLUDES(m_Lock);
  /// Does `job` on the agent thread and returns when it is done, or at once on that thread itself.
  /// What it throws comes out of this call. The caller must hold no lock that a plug-in takes. [any
  /// thread]
  void Call(const Job& job) NOX_EXCLUDES(m_Lock);

 private:
  void Run();
  bool Take(Job& job) NOX_EXCLUDES(m_Lock);
  bool IsStopped() NOX_EXCLUDES(m_Lock);
  bool Enqueue(Job job, std::size_t maxWaiting) NOX_EXCLUDES(m_Lock);

  BaseSDK::AEvent m_Wake;
  BaseSDK::AMutex m_Lock;
  std::deque<Job> m_Jobs NOX_GUARDED_BY(m_Lock);
  bool m_Stop NOX_GUARDED_BY(m_Lock) = false;

  std::thread m_Thread;  ///< last: it uses all of the above
};

}  // namespace NoxAgent
