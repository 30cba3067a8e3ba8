#pragma once

#include "agent/client/AgentApi.h"
#include "agent/client/HandlerRun.h"
#include "agent/simulation/SimulationRequest.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// What a running agent knows of one of its tasks, beside the task's document.
struct LiveTask {
  enum class Gate { Open, Closed, Assumed };

  Gate m_Gate = Gate::Assumed;  ///< Assumed: the agent does not tell
  std::string m_Zone;           ///< the agent's, as its TZ names it; empty: it does not tell
  std::string m_ZoneName;       ///< the same for people
  /// When the scheduler reads its task files next, at the latest; nothing: within the hour.
  std::optional<long> m_Reading;
  /// The task as the scheduler has it; nothing when it has not read the task's file yet.
  std::optional<SimulationRequest::Memory> m_Memory;
  std::optional<HandlerRun> m_Run;
  long m_AskedAt = 0;  ///< when this was so

  bool IsRunning() const { return m_Run && m_Run->IsUnderWay(); }
  /// "at 2026-06-15 14:20:00 +0200" or "within the hour".
  std::string ReadingText() const;
};

LiveTask ReadLiveTask(AgentApi& agent, const std::string& id);  ///< as it is now

/// Has the simulation of the request's one task begin as the agent's scheduler is, and look at
/// `moment`. A moment that has passed is looked at with the document alone. A task whose file the
/// scheduler has not read yet is looked at when that is done, if this is later. A run that is under
/// way is taken to end with "Ok".
void BeginAsAgent(const LiveTask& task, long moment, SimulationRequest& request);

}  // namespace NoxAgent
