#pragma once

#include <AgentInterfacesV3/AMsgValue.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace NoxHandler {

/// Knows each task's latest run since the agent started. The supervisor notes what happens; other
/// threads ask. Moments are seconds since the epoch. [any thread]
class LatestRuns {
 public:
  /// Waiting: for its start. None: no run is known, but that a start was left out.
  enum class Phase { Waiting, Running, Ended, None };

  struct Facts {
    Phase m_Phase = Phase::Waiting;
    /// Which run of the task it is since the agent started, from 1. 0 of one before that, and of
    /// none.
    long m_Number = 0;
    std::optional<long> m_Start;
    std::optional<long> m_End;
    long m_Pid = 0;                 ///< while running
    bool m_Succeeded = false;       ///< when ended
    bool m_IsFinal = false;         ///< when failed: the scheduler was told that all is well
    BaseSDK::AString m_Reason;      ///< how it ended, or what it waits for; empty while running
    std::optional<long> m_Queued;   ///< since when the next run waits for the end of this one
    std::optional<long> m_Skipped;  ///< the last start that was left out since this run
    BaseSDK::AString m_SkipReason;
    long m_Runs = 0;   ///< how many numbers the task's runs have had since the agent started
    long m_Skips = 0;  ///< how many starts of the task were left out since then
  };

  /// How many ended runs are remembered unless told otherwise; they take some ten megabytes.
  static constexpr std::size_t MostEnded = 20000;

  /// At most `mostEnded` ended runs are remembered; the oldest are forgotten first.
  explicit LatestRuns(std::size_t mostEnded = MostEnded) : m_MostEnded(mostEnded) {}

  /// How a run ended, with all its attempts.
  struct Ending {
    long m_Start = 0;
    long m_End = 0;
    bool m_Succeeded = false;
    bool m_IsFinal = false;  ///< as in Facts
    BaseSDK::AString m_Reason;
    long m_Number = 0;  ///< as in Facts
  };

  /// A number for the task's next run, which goes on to the following ones.
  long NewNumber(const BaseSDK::AString& taskId) NOX_EXCLUDES(m_Lock);

  // Each of the next five replaces what was known of the task. When an earlier run or the same one
  // goes on or waits still, they keep the last start that was left out and the one that waits.

  /// The run cannot start yet; `reason` says what it waits for.
  void NoteWaiting(const BaseSDK::AString& taskId, long number, const BaseSDK::AString& reason)
      NOX_EXCLUDES(m_Lock);
  /// An attempt of the run that began at `start` goes on.
  void NoteStart(const BaseSDK::AString& taskId, long number, long start, long pid)
      NOX_EXCLUDES(m_Lock);
  /// An attempt of that run has failed; `reason` says how, and when the next one begins.
  void NotePause(const BaseSDK::AString& taskId, long number, long start,
                 const BaseSDK::AString& reason) NOX_EXCLUDES(m_Lock);
  /// No start waits for its end any more.
  void NoteEnd(const BaseSDK::AString& taskId, const Ending& ending) NOX_EXCLUDES(m_Lock);
  /// A start was left out before anything ran, and does not come again: the scheduler is told that
  /// all is well. `before` is what was known of the task then; if that is no run that has ended, no
  /// run is known any more.
  void NoteLeftOut(const BaseSDK::AString& taskId, const std::optional<Facts>& before,
                   const BaseSDK::AString& reason, long moment) NOX_EXCLUDES(m_Lock);
  /// The next three note of the latest run that a further start waits for its end, that it does no
  /// more, or that one was left out. They note nothing when no run of the task is known.
  void NoteQueued(const BaseSDK::AString& taskId, long moment) NOX_EXCLUDES(m_Lock);
  void NoteNoneQueued(const BaseSDK::AString& taskId) NOX_EXCLUDES(m_Lock);
  void NoteSkip(const BaseSDK::AString& taskId, const BaseSDK::AString& reason, long moment)
      NOX_EXCLUDES(m_Lock);

  /// Whether a run of the task goes on or waits.
  bool IsUnderWay(const BaseSDK::AString& taskId) const NOX_EXCLUDES(m_Lock);
  /// Nothing when no run of the task is known.
  std::optional<Facts> Find(const BaseSDK::AString& taskId) const NOX_EXCLUDES(m_Lock);
  /// The task's run as INoxCommandHandler::GetRun tells it; empty when none is known.
  Corvane::AgentInterfacesV3::AStringMap Describe(const BaseSDK::AString& taskId) const
      NOX_EXCLUDES(m_Lock);
  /// For the object's report: how many run and wait, and a line for each of them.
  BaseSDK::AString Report() const NOX_EXCLUDES(m_Lock);

 private:
  struct Entry {
    Facts m_Facts;
    std::uint64_t m_EndedAs = 0;  ///< its key in m_Ended, 0 when it has not ended
  };

  Facts OfRun(const BaseSDK::AString& taskId, long number) const NOX_REQUIRES(m_Lock);
  Entry& Renew(const BaseSDK::AString& taskId, Facts facts) NOX_REQUIRES(m_Lock);
  void EnterEnded(const BaseSDK::AString& taskId, Entry& entry) NOX_REQUIRES(m_Lock);

  const std::size_t m_MostEnded;
  mutable BaseSDK::AMutex m_Lock;
  std::map<BaseSDK::AString, Entry> m_Runs NOX_GUARDED_BY(m_Lock);
  std::map<std::uint64_t, BaseSDK::AString> m_Ended NOX_GUARDED_BY(m_Lock);  ///< in their order
  std::uint64_t m_Ends NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace NoxHandler
