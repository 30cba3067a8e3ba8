#pragma once

#include "agent/client/LiveTask.h"
#include "agent/client/RuleWords.h"
#include "agent/client/TaskSummary.h"
#include "agent/library/Json.h"
#include "agent/simulation/SimulationRequest.h"
#include "agent/simulation/TaskFacts.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// Why a task runs or does not run at one moment, in sentences.
class Explanation {
 public:
  using Gate = LiveTask::Gate;

  /// The words of the rules come from the document `task`; `facts`, which are about the same
  /// document, tell what is due and what comes next. `live` is what the agent knows, for a task of
  /// an agent; the request for the facts must then have come from BeginAsAgent. All times are local
  /// (TZ).
  Explanation(const SimulationRequest::Document& task, const TaskFacts& facts, Gate gate,
              const std::optional<LiveTask>& live = {});

  /// All sentences, one or two on a line.
  void Print(std::ostream& out) const;
  Json ToJson() const;

  /// The last line: whether the task runs at the moment, and why.
  std::string Verdict() const;

 private:
  std::optional<HandlerRun> LatestRun() const;
  std::string GateLine() const;
  std::string UntilReturn() const;
  std::string EnabledLine() const;
  std::vector<std::string> LastRunLines() const;
  std::string LastRunLine() const;
  std::string UnfinishedLine(const std::string& run) const;
  bool IsFromMemory() const;
  bool RanAtThisMoment() const;
  std::vector<std::string> TriggerLines(std::size_t index) const;
  std::string DayLine(const RuleWords& words) const;
  std::string StartLine(const RuleWords& words, bool due) const;
  std::string NextLine(std::size_t index) const;
  std::string RunWords() const;
  std::string WhyNot() const;
  std::vector<std::string> Lines() const;
  long NextRun() const;

  const std::string m_Id;
  const TaskFacts m_Facts;
  const Gate m_Gate;
  const std::optional<LiveTask> m_Live;
  const std::optional<RunEntry> m_LastRun;
  std::vector<RuleWords> m_Triggers;
};

}  // namespace NoxAgent
