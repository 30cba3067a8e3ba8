// The three questions that nox-simulate answers. Each takes over the time, the files and the host
// of the process until it returns, so one at a time. They throw AgentError when the scheduler
// cannot be loaded.
#pragma once

#include "agent/simulation/SimulationEvent.h"
#include "agent/simulation/SimulationRequest.h"
#include "agent/simulation/TaskFacts.h"

#include <vector>

namespace NoxAgent {

struct NextRuns {
  std::vector<SimulationEvent> m_Runs;
  /// No run but these begins from the request's m_Moment up to this one.
  long m_SearchedUntil = 0;
};

/// All that happens to the request's documents from m_From to m_To, both included.
std::vector<SimulationEvent> Simulate(const SimulationRequest& request);

/// The first m_Count runs of the request's one task, repetitions included, none after m_To. Where
/// the scheduler's own next run is days away the time up to the day before it is left out.
NextRuns FindNextRuns(const SimulationRequest& request);

/// What the scheduler makes of the request's one task when it looks at it at m_Moment: before,
/// during and after one pass with an open gate. Until then it works as usual, from m_From on.
TaskFacts FindTaskFacts(const SimulationRequest& request);

}  // namespace NoxAgent
