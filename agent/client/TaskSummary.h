#pragma once

#include "agent/client/HandlerRun.h"
#include "agent/document/TaskGlance.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// The run entry of a task document.
struct RunEntry {
  std::string m_Start;  ///< local time as it stands there, "2026-11-21 08:00:00"
  long m_Seconds = -1;  ///< the same since the epoch, read in this process's zone; -1 if unreadable
  std::string m_State;  ///< "Started", "Ok", "Failed" or what a handler reported; may be empty

  friend bool operator==(const RunEntry&, const RunEntry&) = default;
};

/// Nothing when the document has no run entry.
std::optional<RunEntry> ReadRunEntry(const TaskGlance& document);
std::optional<RunEntry> ReadRunEntry(const std::string& taskXml);

/// Whether the scheduler's last run (t3, in seconds since the epoch) is later than the run in the
/// document, which was read after that: then the last run could not be written to the file. This
/// process's zone must be the agent's.
bool IsUnrecorded(long lastRun, const std::optional<RunEntry>& recorded);

/// The state to show for the run on record. It is that of the record, except where the handler told
/// the scheduler "Ok" only so that the task does not come again: "Failed" for a run that failed,
/// and "Skipped" for a start that was left out.
std::string TrueState(const RunEntry& recorded, const std::optional<HandlerRun>& run);

/// One task at a glance, put together from its document and the scheduler's report.
struct TaskSummary {
  std::string m_Id;
  bool m_Enabled = true;
  long m_Returns = 0;  ///< when the agent enables it again, since the epoch; 0: never
  /// The document has a run entry also for a start that the handler left out; that is not shown
  /// here. It has none for a run by hand, which is.
  std::optional<RunEntry> m_LastRun;
  bool m_Recorded = true;  ///< false: the last run could not be written, and its state is not known
  bool m_Loaded = false;   ///< the scheduler holds it in memory; what follows is known only then
  long m_NextRun = 0;      ///< since the epoch, 0 for none
  bool m_Late = false;     ///< it became due later than planned and has not reported back yet
};

/// What the scheduler has in memory of a task.
struct TaskReport {
  long m_LastRun = 0;  ///< since the epoch, 0 or less when it counts none
  long m_NextRun = 0;  ///< likewise
  bool m_Late = false;
};

/// Puts the summary together. The document must have been read after the report, which is nothing
/// when the scheduler does not hold the task in memory. This process's zone must be the agent's.
TaskSummary Summarize(const std::string& id, const TaskGlance& document,
                      const std::optional<TaskReport>& report,
                      const std::optional<HandlerRun>& run = {});

}  // namespace NoxAgent
