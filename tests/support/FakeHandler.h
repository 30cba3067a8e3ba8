#pragma once

#include "tests/support/Texts.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

/// A task handler that runs nothing and remembers every call: which operation, which batch, when by
/// `time()`. It gives the answers that were set beforehand, and 1 when there are none. One object
/// serves any number of openings. May be used from any thread.
class FakeHandler : public Corvane::AgentInterfacesV3::INoxScheduledTaskHandler {
 public:
  struct Call {
    std::string m_Operation;  ///< "RunTasks" or "RunTasksEx"
    BaseSDK::AString m_Batch;
    long m_Time;

    bool operator==(const Call&) const = default;
  };
  /// Is called with each call before it is answered, on the caller's thread.
  using Observer = std::function<void(const Call&)>;

  FakeHandler() = default;
  virtual ~FakeHandler() = default;

  /// The next calls of the operation answer these in turn, before they answer 1 again.
  void ScriptRunTasksEx(std::deque<long> results);
  void ScriptRunTasks(std::deque<long> results);
  /// From now on unscripted calls answer this.
  void AnswerAlways(long runTasksEx, long runTasks);
  void Observe(Observer observer);

  std::vector<Call> Calls() const;
  /// The batch texts alone, in order.
  Texts Batches() const;
  void ClearCalls();
  /// How often it was released. Openings are counted by the host, see FakeHost.
  unsigned Releases() const;

  long RunTasks(const BaseSDK::AString& batch) override;
  long RunTasksEx(const BaseSDK::AString& batch) override;
  long Release() override;
  int ObjectDebugInfo(BaseSDK::AString& report) override;
  int NotifyObject(long kind, long code, const BaseSDK::AString& text) override;

 private:
  struct Answers {
    std::deque<long> m_Script{};
    long m_Default = 1;

    long Next();
  };

  void Record(const char* operation, const BaseSDK::AString& batch);

  mutable BaseSDK::AMutex m_Lock;
  std::vector<Call> m_Calls NOX_GUARDED_BY(m_Lock);
  Answers m_RunTasksEx NOX_GUARDED_BY(m_Lock);
  Answers m_RunTasks NOX_GUARDED_BY(m_Lock);
  Observer m_Observer NOX_GUARDED_BY(m_Lock);
  unsigned m_Releases NOX_GUARDED_BY(m_Lock) = 0;
};

std::ostream& operator<<(std::ostream& out, const FakeHandler::Call& call);

}  // namespace TestSupport
