#pragma once

#include "agent/simulation/SimulationEvent.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <vector>

namespace NoxAgent {

/// What has happened so far in a simulation, in the order in which it happened.
///
/// [any thread]
class SimulationLog {
 public:
  /// Adds the event as of now, by the simulated clock; a ClockSet, which is added before the clock
  /// is set, as of the new reading. A notification that was posted in this second already is
  /// counted there.
  void Add(SimulationEvent event);
  /// The same for an event that is no more than its kind.
  void Add(SimulationEvent::Kind kind);

  std::vector<SimulationEvent> Events() const;
  /// How many of the events are runs.
  unsigned Runs() const;

 private:
  bool CountAgain(const SimulationEvent& event) NOX_REQUIRES(m_Lock);

  mutable BaseSDK::AMutex m_Lock;
  std::vector<SimulationEvent> m_Events NOX_GUARDED_BY(m_Lock);
  unsigned m_Runs NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace NoxAgent
