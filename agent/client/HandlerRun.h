#pragma once

#include "agent/library/Json.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What the command handler tells of the latest run of a task since the agent started, or of one
/// before that failed for good.
struct HandlerRun {
  /// None: it knows no run, only that a start was left out.
  enum class Phase { Waiting, Running, Ended, None };

  Phase m_Phase = Phase::Ended;
  std::optional<long> m_Start, m_End;  ///< since the epoch, as far as known
  std::optional<long> m_Pid;           ///< while running
  std::string m_Result;                ///< "Ok" or "Failed" when ended, else empty
  std::string m_Reason;                ///< in words, how it ended or what it waits for
  std::optional<long> m_Queued;        ///< since when the next run waits for the end of this one
  std::optional<long> m_Skipped;       ///< the last start that was left out since it began
  std::string m_SkipReason;
  bool m_IsFinal = false;  ///< it failed, and the scheduler was told "Ok" so that it lets go of it
  long m_Number = 0;  ///< which run of the task since the agent started, from 1; 0 when it is none
  long m_Runs = 0;    ///< how many have had such a number; more than that of an earlier one
  long m_Skips = 0;   ///< how many starts of the task were left out since the agent started

  bool IsUnderWay() const { return m_Phase == Phase::Waiting || m_Phase == Phase::Running; }
  /// Why the task's last run was left with `state`, a state other than "Ok": for "Skipped" why the
  /// start was left out, otherwise how the run ended. Empty when that is not known.
  std::string ReasonAgainst(const std::string& state) const;
  /// What there is to say of the run, a sentence each; none for a run that ended with "Ok". Local
  /// time (TZ).
  std::vector<std::string> Sentences() const;
};

/// Reads the answer of GetRun; nothing when there is none, or when its state is not one of these.
std::optional<HandlerRun> ReadHandlerRun(
    const std::optional<std::map<std::string, std::string>>& answer);

/// The run as noxctl prints it; docs/json.md describes the members. JSON's null for nothing.
Json ToJson(const std::optional<HandlerRun>& run);

}  // namespace NoxAgent
