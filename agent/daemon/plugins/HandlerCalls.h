#pragma once

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>

namespace NoxAgent {

/// The task handlers that plug-ins have open, so that the agent knows when none is at work any
/// more: a scheduler is not to be taken down while it waits for a handler.
class HandlerCalls {
 public:
  using Handler = Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;

  HandlerCalls();

  /// A handler that forwards to `handler`, which it owns, and counts as open until it is released.
  /// [any thread]
  Handler* Track(Handler* handler);

  /// Whether none is open, after waiting for `milliseconds` at most.
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
