#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/run/Attempts.h"
#include "agent/handler/run/Hooks.h"
#include "agent/handler/run/LatestRuns.h"
#include "agent/handler/run/RunBook.h"
#include "agent/handler/run/RunGroups.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/system/WaitClock.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <poll.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace NoxHandler {

/// The runs that go on or wait: decides which begin when they come due, and what becomes of a task
/// that comes due during its run. A task has one run at a time, unless its job allows more; then it
/// is told how the one stands that began last of those that go on, and how the one ended that began
/// last of all. [supervisor thread]
class TaskRuns {
 public:
  /// All references are borrowed.
  TaskRuns(const HandlerSettings& settings, const WaitClock& clock, RunBook& book);

  /// Ends what an earlier agent left running.
  void EndLeftovers();
  /// A task is due.
  void Dispatch(const TaskBatch::Entry& entry);
  /// Ends the task's runs for good, and leaves out the start that waits for their end. One that has
  /// not begun is left out as well. Nothing when they are over meanwhile.
  void EndRuns(const BaseSDK::AString& taskId);
  /// Ends all runs. What is dispatched from now on is left out: its task says "Started", and is run
  /// after the next start of the agent.
  void BeginStop();

  /// Adds the descriptors whose readiness calls for Advance.
  void AddHandles(std::vector<pollfd>& handles);
  /// How long until Advance is due; nothing for never.
  std::optional<WaitClock::Moment::duration> Rest() const;
  /// The wall-clock moment at which Advance is due, in seconds since the epoch; nothing for never.
  std::optional<long> PeriodEnd() const;
  /// Does what is due. `handles` are those of the last AddHandles, with what poll says of them.
  void Advance(const std::vector<pollfd>& handles);

  bool IsEmpty() const { return m_Slots.empty() && m_Hooks.IsEmpty(); }
  /// Lets go of those that do not end; the next agent finds them on record.
  void GiveUp();

 private:
  /// A task, and a number that grows from one of its runs to the next.
  using Key = std::pair<BaseSDK::AString, std::uint64_t>;
  struct Slot {
    std::unique_ptr<Attempts> m_Attempts;       ///< never null between two steps of the loop
    std::optional<LatestRuns::Facts> m_Before;  ///< what was known of the task
    /// Of the runs that were over beside it, how the one ended that began last.
    std::optional<LatestRuns::Ending> m_Ended;
    bool m_IsInLine = false;                 ///< whether m_Line has the run
    std::optional<TaskBatch::Entry> m_Next;  ///< begins when the run has ended
    /// A start of the task was given up for the handler's end: its task is to keep "Started", so
    /// that it comes again.
    bool m_ComesAgain = false;
    std::size_t m_FirstHandle = 0;  ///< its part of the handles
    std::size_t m_HandleCount = 0;
  };

  std::map<Key, Slot>::iterator LatestOf(const BaseSDK::AString& taskId);
  bool IsLatest(const Slot& slot);
  void EndByRequest(Slot& slot);
  void DispatchToPresent(Slot& slot, const TaskBatch::Entry& entry);
  void DispatchAfter(Slot& slot, const TaskBatch::Entry& entry);
  void Queue(Slot& slot, const TaskBatch::Entry& entry);
  void Replace(Slot& slot, const TaskBatch::Entry& entry);
  void LeaveOut(const TaskBatch::Entry& entry, const char* why);
  void Admit(const TaskBatch::Entry& entry);
  void StartBeside(const TaskBatch::Entry& entry);
  void LeaveLine(const Key& key);
  void Fail(const Key& key, long number, const BaseSDK::AString& reason);
  void NoteProgress(const Slot& slot);
  void LineUp(const Key& key, Slot& slot);
  std::size_t FreePlaces() const;
  void BeginThoseInLine();
  void BeginAttempt(Slot& slot);
  void BeginFirst(Attempts& attempts);
  void AdvanceSlot(Slot& slot);
  std::map<Key, Slot>::iterator End(std::map<Key, Slot>::iterator it, RunBook::States& states);
  void LeaveTo(Slot& other, const Slot& ended);
  const char* NoteLastEnd(const Slot& slot);
  void GiveUpStart(const BaseSDK::AString& taskId);
  static bool NeedsAdvance(const Slot& slot, const std::vector<pollfd>& handles);

  const HandlerSettings& m_Settings;
  const WaitClock& m_Clock;
  RunBook& m_Book;
  RunRecords m_Records;
  RunGroups m_Groups;
  Hooks m_Hooks;
  std::map<Key, Slot> m_Slots;
  std::uint64_t m_LastNumber = 0;
  std::size_t m_Running = 0;  ///< slots with a process
  /// The runs with an attempt to begin when another one has ended, because too many go on. Each has
  /// a slot.
  std::deque<Key> m_Line;
  std::vector<TaskBatch::Entry> m_Next;  ///< to be handed over next, for their runs have ended
  bool m_IsStopping = false;
};

}  // namespace NoxHandler
