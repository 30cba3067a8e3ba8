#pragma once

#include "agent/library/Json.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace NoxAgent {

/// What nox-simulate is asked. noxctl writes it to the program's standard input as one JSON object.
/// The zone is that of the process (TZ). docs/simulation.md explains the fields to users.
struct SimulationRequest {
  static constexpr long CycleSeconds = 3600;  ///< from one reading of the task files to the next

  enum class Command {
    Simulate,  ///< everything that happens from m_From to m_To
    Next,      ///< the first m_Count runs from m_Moment on, none later than m_To
    Explain,   ///< how the scheduler sees the one task at m_Moment
  };
  /// What a running scheduler has of a task in memory. It may differ from what the document says: a
  /// run that did not end with "Ok" counts as a run until the files are read next.
  struct Memory {
    long m_LastRun = -1;  ///< -1: the task counts as never run
    bool m_Enabled = true;
    /// A run is under way, and is taken to end with "Ok" before the files are read next.
    bool m_RunEndsOk = false;
  };
  struct Document {
    std::string m_Id;
    std::string m_Xml;                    ///< as it lies in the task directory
    std::optional<Memory> m_Memory = {};  ///< nothing: what the document says
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
  /// When the scheduler reads the task files next, at most an hour after m_From; nothing: it starts
  /// at m_From, and reads them again an hour later.
  std::optional<long> m_Reading;
  /// The moment that Next and Explain are about, not before m_From; nothing: m_From.
  std::optional<long> m_Moment;
  unsigned m_Count = 0;            ///< how many runs Next is to find
  std::vector<Span> m_GateClosed;  ///< from the first moment on, until the second
  std::vector<ClockStep> m_ClockSteps;
  std::optional<long> m_RunSeconds;  ///< nothing: a run is over as soon as it is accepted
  std::vector<long> m_FailAt;        ///< for each of these moments the first run from then on fails
};

Json ToJson(const SimulationRequest& request);
/// Throws JsonError when `json` is no request. Missing fields keep their initial values.
SimulationRequest SimulationRequestFrom(const Json& json);

}  // namespace NoxAgent
