#pragma once

#include "agent/client/AgentApi.h"
#include "agent/client/HandlerRun.h"
#include "agent/simulation/SimulationRequest.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// What a running agent knows of one of its tasks, beside the task's document.
struct LiveTask {
  /// Whether the scheduler runs tasks; Assumed: the agent does not tell, and it is taken to do so.
  enum class Gate { Open, Closed, Assumed };

  Gate m_Gate = Gate::Assumed;
  std::string m_Zone;      ///< the agent's, as its TZ names it; empty: it does not tell
  std::string m_ZoneName;  ///< the same for people
  /// When the scheduler reads its task files next, at the latest; nothing: within the hour.
  std::optional<long> m_Reading;
  /// The task as the scheduler has it; nothing when it has not read the task's file yet.
  std::optional<SimulationRequest::Memory> m_Memory;
  std::optional<HandlerRun> m_Run;
  long m_Returns = 0;  ///< when the agent enables it again, since the epoch; 0: never
  long m_AskedAt = 0;  ///< when this was so

  bool IsRunning() const { return m_Run && m_Run->IsUnderWay(); }
  /// "at 2026-06-15 14:20:00 +0200" or "within the hour".
  std::string ReadingText() const;
  /// From when on a task that is disabled for a while is enabled; nothing for any other one.
  std::optional<long> Return() const;
  /// Of a disabled task: "The task is disabled until ...: until then nothing runs."
  std::string DisabledText() const;
};

/// When a task comes back that is disabled for a while (MomentOrNull); null also for a file.
Json ReturnJson(const std::optional<LiveTask>& task);

LiveTask ReadLiveTask(AgentApi& agent, const std::string& id);  ///< as it is now

/// Of the agent no more than what a ZoneInForce is chosen by. Nothing when the agent cannot be
/// reached and `mayBeAway`.
std::optional<LiveTask> ReadAgentsZone(AgentApi& agent, bool mayBeAway);

/// Sets up the request, which has one task, so that the simulation begins in the state in which the
/// agent's scheduler is and looks at `moment`. For a moment that has passed it goes by the document
/// alone. If the scheduler has not read the task's file yet, the simulation looks no earlier than
/// when it does. A run under way is taken to end with "Ok".
void BeginAsAgent(const LiveTask& task, long moment, SimulationRequest& request);
/// The same for a task that is disabled for a while: the simulation begins when it comes back, and
/// looks no earlier. REQUIRES: task.Return().
void BeginAtReturn(const LiveTask& task, long moment, SimulationRequest& request);

}  // namespace NoxAgent
