#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/run/Attempts.h"
#include "agent/handler/run/LatestRuns.h"
#include "agent/handler/run/RunBook.h"
#include "agent/handler/run/RunRecords.h"
#include "agent/handler/system/WaitClock.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <poll.h>

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace NoxHandler {

/// The runs that go on or wait, one of a task at most: decides which begin, when they come due, and
/// what becomes of a task that comes due during its run. [supervisor thread]
class TaskRuns {
 public:
  /// All references are borrowed.
  TaskRuns(const HandlerSettings& settings, const WaitClock& clock, RunBook& book);

  /// Ends what an earlier agent left running.
  void EndLeftovers();
  /// A task is due.
  void Dispatch(const TaskBatch::Entry& entry);
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

  bool IsEmpty() const { return m_Slots.empty(); }
  /// Lets go of those that do not end; the next agent finds them on record.
  void GiveUp();

 private:
  struct Slot {
    std::unique_ptr<Attempts> m_Attempts;       ///< never null between two steps of the loop
    std::optional<LatestRuns::Facts> m_Before;  ///< what was known of the task
    bool m_IsInLine = false;                    ///< whether m_Line has the task
    std::optional<TaskBatch::Entry> m_Next;     ///< what waits for the run's end
    std::size_t m_FirstHandle = 0;              ///< its part of the handles
    std::size_t m_HandleCount = 0;
  };

  void DispatchToPresent(Slot& slot, const TaskBatch::Entry& entry);
  void Queue(Slot& slot, const TaskBatch::Entry& entry);
  void Replace(Slot& slot, const TaskBatch::Entry& entry);
  void LeaveOut(const TaskBatch::Entry& entry, const char* why);
  void Admit(const TaskBatch::Entry& entry);
  void Fail(const BaseSDK::AString& taskId, const BaseSDK::AString& reason);
  void LineUp(Slot& slot);
  void BeginThoseInLine();
  void BeginAttempt(Slot& slot);
  void BeginFirst(Attempts& attempts);
  void AdvanceSlot(Slot& slot);
  static bool NeedsAdvance(const Slot& slot, const std::vector<pollfd>& handles);

  const HandlerSettings& m_Settings;
  const WaitClock& m_Clock;
  RunBook& m_Book;
  RunRecords m_Records;
  std::map<BaseSDK::AString, Slot> m_Slots;
  std::size_t m_Running = 0;  ///< slots with a process
  /// The tasks with an attempt to begin when another one has ended, because too many go on. A task
  /// that has no slot any more is passed over.
  std::deque<BaseSDK::AString> m_Line;
  bool m_IsStopping = false;
};

}  // namespace NoxHandler
