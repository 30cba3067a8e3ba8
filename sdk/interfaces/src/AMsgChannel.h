#pragma once

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueueServer.h>
#include <BaseSDK/AMutex.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <optional>

namespace Corvane::AgentInterfacesV3 {

/// What the two ends of a message queue and the proxies share; it lives as long as any of them.
/// Requests are counted while they run, and no lock is held meanwhile. [any thread]
class AMsgChannel {
 public:
  using ADeadline = std::optional<std::chrono::steady_clock::time_point>;

  /// Null when no queue has the number.
  static std::shared_ptr<AMsgChannel> Find(int number);
  /// False when the number is negative or taken.
  static bool Register(int number, const std::shared_ptr<AMsgChannel>& channel);
  static void Unregister(int number);

  /// False when an object is bound already.
  bool Bind(AMsgQueueServer& server);
  /// Takes the object off the channel; returns when no request is under way in it any more.
  void Unbind();
  bool HasServer() const;

  // AMsgQueue describes these two.
  long Send(const AMsgIn& request);
  static bool IsAnswering();
  bool IsClosed() const;
  /// Requests that the calling thread sends are not made safe one by one from now on. Those that it
  /// sends from within one of them are. Returns what EndGroup is to be given.
  static std::optional<unsigned> BeginGroup();
  static void EndGroup(std::optional<unsigned> before);
  /// Refuses requests from now on and waits for those under way. False when one is still under way
  /// at the deadline; without a deadline it waits as long as it takes.
  bool Close(ADeadline deadline);
  void Reopen();

 private:
  class AVisit;

  AMsgQueueServer* Enter(AMsgReply& reply);
  void Leave();
  bool WaitForIdle(ADeadline deadline) NOX_REQUIRES(m_Lock);

  mutable BaseSDK::AMutex m_Lock;
  std::condition_variable_any m_Idle;
  AMsgQueueServer* m_Server NOX_GUARDED_BY(m_Lock) = nullptr;
  unsigned m_UnderWay NOX_GUARDED_BY(m_Lock) = 0;
  bool m_Unbinding NOX_GUARDED_BY(m_Lock) = false;
  bool m_Closed NOX_GUARDED_BY(m_Lock) = false;
};

}  // namespace Corvane::AgentInterfacesV3
