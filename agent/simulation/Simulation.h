// The three questions that nox-simulate answers. Each call takes over the time, the files and the
// host of the process until it returns, so only one may go on at a time. Each throws AgentError
// when the scheduler cannot be loaded.
#pragma once

#include "agent/simulation/SimulationEvent.h"
#include "agent/simulation/SimulationRequest.h"
#include "agent/simulation/TaskFacts.h"

#include <vector>

namespace NoxAgent {

/// The answer to FindNextRuns.
struct NextRuns {
  std::vector<SimulationEvent> m_Runs;
  /// No run but these begins from the request's m_Moment up to this one.
  long m_SearchedUntil = 0;
};

/// All that happens to the request's documents from m_From to m_To, both included.
std::vector<SimulationEvent> Simulate(const SimulationRequest& request);

/// The first m_Count runs of the request's one task, repetitions included, none after m_To. When
/// the next run is days away by the scheduler's own reckoning, the days up to the one before it are
/// not simulated.
NextRuns FindNextRuns(const SimulationRequest& request);

/// How the scheduler sees the request's one task at m_Moment: before, during and after one look at
/// it with an open gate. Until then it works as usual, from m_From on.
TaskFacts FindTaskFacts(const SimulationRequest& request);

}  // namespace NoxAgent
