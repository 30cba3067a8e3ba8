#pragma once

#include "agent/library/Json.h"
#include "agent/simulation/SimulationEvent.h"

#include <optional>
#include <vector>

namespace NoxAgent {

/// How the scheduler itself sees a task at one moment.
struct TaskFacts {
  struct Trigger {
    bool m_Due = false;
    long m_Next = 0;  ///< the next run after the moment, 0 for none

    friend bool operator==(const Trigger&, const Trigger&) = default;
  };

  long m_At = 0;
  bool m_Enabled = false;
  long m_LastRun = -1;  ///< as the scheduler counts it: -1 also when the last run did not finish
  std::vector<Trigger> m_Triggers;       ///< in document order
  std::optional<SimulationEvent> m_Run;  ///< what one look with an open gate starts
  bool m_Deleted = false;                ///< the look deletes the task
  bool m_NoHandler = false;              ///< the look records a run, but there is nobody to run it
  /// Its task file went at this moment, before the look: no trigger could fire any more.
  std::optional<long> m_GoneSince;
  /// When the next reading of the task files makes the task due, as one that never ran; nothing
  /// when it does not.
  std::optional<long> m_DueByReading;

  friend bool operator==(const TaskFacts&, const TaskFacts&) = default;
};

Json ToJson(const TaskFacts& facts);
/// Throws JsonError when `json` is none of these.
TaskFacts TaskFactsFrom(const Json& json);

}  // namespace NoxAgent
