#include "agent/daemon/plugins/HandlerCalls.h"

#include <AgentInterfacesV3/CIClient.h>

using BaseSDK::AEvent;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {

class HandlerCalls::Link final : public Handler {
 public:
  Link(HandlerCalls& calls, Handler* handler) : m_Calls(calls), m_Handler(handler) {
    m_Calls.Opened();
  }
  virtual ~Link() { m_Calls.Released(); }

  long Release() override {
    delete this;
    return 0;
  }
  int ObjectDebugInfo(AString& report) override { return m_Handler->ObjectDebugInfo(report); }
  int NotifyObject(long kind, long code, const AString& text) override {
    return m_Handler->NotifyObject(kind, code, text);
  }
  long RunTasks(const AString& batch) override { return m_Handler->RunTasks(batch); }
  long RunTasksEx(const AString& batch) override { return m_Handler->RunTasksEx(batch); }

 private:
  HandlerCalls& m_Calls;
  Corvane::AgentInterfacesV3::CIClient<Handler> m_Handler;
};

HandlerCalls::HandlerCalls() : m_NoneOpen(AEvent::AutoReset) {}

HandlerCalls::Handler* HandlerCalls::Track(Handler* handler) {
  return new Link(*this, handler);  // owned by the plug-in, whose Release destroys it
}

bool HandlerCalls::WaitUntilNone(unsigned long milliseconds) {
  while (!IsNoneOpen()) {
    // The event may still be set from an earlier time, which costs one more look. After a wait that
    // times out nothing is left to wait for.
    if (m_NoneOpen.Wait(milliseconds, BaseSDK::ClockSkewIgnore) == AEvent::TimedOut) {
      return IsNoneOpen();
    }
  }
  return true;
}

void HandlerCalls::Opened() {
  AMutexGuard guard(m_Lock);
  ++m_Open;
}

void HandlerCalls::Released() {
  AMutexGuard guard(m_Lock);
  if (--m_Open == 0) {
    (void)m_NoneOpen.Set();
  }
}

bool HandlerCalls::IsNoneOpen() {
  AMutexGuard guard(m_Lock);
  return m_Open == 0;
}

}  // namespace NoxAgent
