#pragma once

#include "agent/library/Json.h"

#include <string>

namespace NoxAgent {

/// One thing that happened in a simulation. nox-simulate writes each as one line of JSON.
struct SimulationEvent {
  enum class Kind {
    Run,           ///< a handler was given the task
    Finished,      ///< a run with a duration, or one that was to fail, has ended
    StillRunning,  ///< the handler was given a task whose earlier run goes on, and starts none
    NoHandler,     ///< tasks were due whose handler cannot be opened; m_Task is the handler's class
    Deleted,       ///< the task's file is gone
    Notification,
    GateClosed,
    GateOpened,
    ClockSet,  ///< m_Time is the new reading
  };

  Kind m_Kind = Kind::Run;
  long m_Time = 0;     ///< seconds since the epoch
  std::string m_Task;  ///< UTF-8; empty for the last three
  /// Of a Run.
  bool m_Late = false;
  bool m_NeverRun = false;
  bool m_KillAtEnd = false;
  /// Of a Run whose end is known at once, and of a Finished: "Ok" or "Failed".
  std::string m_State;
  /// Of a Notification: one of agent/Protocol.h.
  long m_Code = 0;
  unsigned m_Count = 1;  ///< how many equal ones in that second
  /// Of a ClockSet: how far.
  long m_Seconds = 0;

  friend bool operator==(const SimulationEvent&, const SimulationEvent&) = default;
};

/// The flags of a run in words, "late, never run, kill at end"; empty when it has none.
std::string RunFlagsText(const SimulationEvent& run);

Json ToJson(const SimulationEvent& event);
/// Throws JsonError when `json` is no event.
SimulationEvent SimulationEventFrom(const Json& json);

}  // namespace NoxAgent
