#pragma once

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>

namespace NoxAgent {

/// Counts the task handlers that plug-ins have open. The agent unloads nothing while one is open: a
/// scheduler that waits for its handler cannot be taken down.
class HandlerCalls {
 public:
  using Handler = Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;

  HandlerCalls();

  /// A handler that forwards to `handler`, which it owns, and counts as open until it is released.
  /// [any thread]
  Handler* Track(Handler* handler);

  /// Waits until no handler is open; false when that has not happened for `milliseconds`.
  bool WaitUntilNone(unsigned long milliseconds) NOX_EXCLUDES(m_Lock);

 private:
  class Link;
  void Opened() NOX_EXCLUDES(m_Lock);
  void Released() NOX_EXCLUDES(m_Lock);
  bool IsNoneOpen() NOX_EXCLUDES(m_Lock);

  BaseSDK::AEvent m_NoneOpen;
  BaseSDK::AMutex m_Lock;
  unsigned m_Open NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace NoxAgent
