#pragma once

#include "agent/simulation/SimulationLog.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace NoxAgent {

/// The handler of every task in a simulation. It runs nothing and logs the tasks that it is given.
///
/// When runs take no time and none is to fail, it accepts each batch, and the scheduler records
/// "Ok" at once. Otherwise it declines, as the command handler does, and reports the state itself
/// when the simulated run ends. While a task still runs it does not start it again.
class SimulatedHandler final : public Corvane::AgentInterfacesV3::INoxScheduledTaskHandler {
 public:
  using Reporter = std::function<void(const std::string& task, const std::string& state)>;

  /// `log` outlives the handler. `failAt` as in SimulationRequest; `report` is called when a run of
  /// a declined batch ends, on the clock's controlling thread.
  SimulatedHandler(SimulationLog& log, std::optional<long> runSeconds, std::vector<long> failAt,
                   Reporter report);

  /// INoxScheduledTaskHandler [monitor thread]
  long RunTasks(const BaseSDK::AString& batch) override;
  long RunTasksEx(const BaseSDK::AString& batch) override;
  long Release() override { return 0; }
  int ObjectDebugInfo(BaseSDK::AString&) override { return 0; }
  int NotifyObject(long, long, const BaseSDK::AString&) override { return 0; }

 private:
  void Take(const BaseSDK::AString& entry) NOX_EXCLUDES(m_Lock);
  void Begin(const std::string& task) NOX_EXCLUDES(m_Lock);
  void End(const std::string& task, const std::string& state) NOX_EXCLUDES(m_Lock);
  bool Fails(long now) NOX_REQUIRES(m_Lock);

  SimulationLog& m_Log;
  const long m_RunSeconds;
  const bool m_Accepts;
  const Reporter m_Report;

  BaseSDK::AMutex m_Lock;
  std::multiset<long> m_FailAt NOX_GUARDED_BY(m_Lock);
  std::set<std::string> m_Running NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
