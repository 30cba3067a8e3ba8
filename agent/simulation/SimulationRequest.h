#pragma once

#include "agent/library/Json.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace NoxAgent {

/// What nox-simulate is asked for: noxctl writes it to the program's standard input as one JSON
/// object. The zone is that of the process (TZ). docs/simulation.md explains the fields to users.
struct SimulationRequest {
  enum class Command {
    Simulate,  ///< everything that happens from m_From to m_To
    Next,      ///< the first m_Count runs from m_From on, none later than m_To
    Explain,   ///< how the scheduler sees the one task at m_From
  };
  struct Document {
    std::string m_Id;
    std::string m_Xml;
  };
  struct ClockStep {
    long m_At = 0;
    long m_Seconds = 0;  ///< negative: the clock is set back
  };
  using Span = std::pair<long, long>;

  Command m_Command = Command::Simulate;
  std::vector<Document> m_Documents;
  /// Seconds since the epoch, all of them.
  long m_From = 0;
  long m_To = 0;
  unsigned m_Count = 0;
  std::vector<Span> m_GateClosed;  ///< from the first moment on, until the second
  std::vector<ClockStep> m_ClockSteps;
  std::optional<long> m_RunSeconds;  ///< nothing: a run is over as soon as it is accepted
  std::vector<long> m_FailAt;        ///< for each of them the first run from then on fails
};

Json ToJson(const SimulationRequest& request);
/// Throws JsonError for what is none. Missing fields keep their initial values.
SimulationRequest SimulationRequestFrom(const Json& json);

}  // namespace NoxAgent
