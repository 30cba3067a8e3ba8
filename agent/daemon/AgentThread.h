#pragma once

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>

namespace NoxAgent {

/// The agent's own thread. Everything that plug-ins are told (NotifyObject) happens on it, one
/// thing at a time and in order: whoever has something to tell may hold locks that the one told
/// takes.
class AgentThread {
 public:
  using Job = std::function<void()>;

  /// More than this waits only when a plug-in keeps the thread busy for long.
  static constexpr std::size_t MaxWaiting = 100000;

  /// Throws std::system_error when the system has no thread to give.
  AgentThread();
  AgentThread(const AgentThread&) = delete;
  AgentThread& operator=(const AgentThread&) = delete;
  /// Does what is waiting, then ends the thread.
  ~AgentThread();

  /// Has `job` done after all that came before. False when too much is waiting. [any thread]
  bool Post(Job job) NOX_EXCLUDES(m_Lock);
  /// Has `job` done and returns then; on the agent thread itself, does it at once. The caller holds
  /// no lock that a plug-in takes. [any thread]
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
