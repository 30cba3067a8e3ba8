#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/run/LatestRuns.h"
#include "agent/handler/run/OutputPart.h"
#include "agent/handler/run/RunBook.h"
#include "agent/handler/run/TaskRuns.h"
#include "agent/handler/system/WaitClock.h"
#include "agent/handler/system/WakeHandle.h"
#include "agent/handler/system/WallTimer.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <poll.h>

#include <cstdint>
#include <optional>
#include <thread>
#include <vector>

namespace NoxHandler {

/// Runs the jobs of due tasks on one thread of its own: it starts them, watches them, ends those
/// that have to end, and reports to the scheduler how they went.
class Supervisor {
 public:
  /// `clock` is borrowed. Throws std::system_error when the system has no descriptors left.
  explicit Supervisor(const HandlerSettings& settings, const WaitClock& clock = WaitClock::Usual());
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  /// REQUIRES: never started, or Stop returned true.
  ~Supervisor();

  /// Starts the thread. It first ends what an earlier agent left running; entries posted meanwhile
  /// wait for that. Throws std::system_error when the system has no thread to give. [agent thread,
  /// once]
  void Start();
  /// Hands over due tasks, in order, and returns at once. [any thread]
  void Post(const std::vector<TaskBatch::Entry>& entries) NOX_EXCLUDES(m_Lock);
  /// Has the task's run end that goes on or waits, with all that comes of it, as a timeout would
  /// end it, and returns at once. False when no run is under way. [any thread]
  bool StopRun(const BaseSDK::AString& taskId) NOX_EXCLUDES(m_Lock);
  /// Ends all runs (TERM, and KILL after the grace), reports their states and ends the thread.
  /// False when that takes too long; the thread then still runs, and Stop may be called again.
  /// [agent thread]
  bool Stop() NOX_EXCLUDES(m_Lock);

  /// What became of the tasks' runs. [any thread]
  const LatestRuns& Latest() const { return m_Book.Latest(); }
  /// Why the task's job could not be run as things stand; empty when it could. [any thread]
  BaseSDK::AString ProblemOfJob(const BaseSDK::AString& taskId) const;
  /// What the task's runs have put out from this position on: see OutputPart. [any thread]
  std::optional<OutputPart> OutputOf(const BaseSDK::AString& taskId, std::uint64_t position) const;
  /// Whether anything runs, is being started, or was posted and not looked at yet. [any thread]
  bool IsBusy() const NOX_EXCLUDES(m_Lock);

 private:
  /// What the thread is to do: to start the task's run, or to end it.
  struct Order {
    TaskBatch::Entry m_Entry;  ///< for an end only of which task
    bool m_IsEnd = false;
  };

  void Main();
  bool TakePosted(std::vector<Order>& orders) NOX_EXCLUDES(m_Lock);
  void Follow(const Order& order);
  void BeginStop();
  void PublishBusy() NOX_EXCLUDES(m_Lock);
  bool IsFinished() const;
  void Wait();
  int WaitMilliseconds() const;

  const HandlerSettings m_Settings;
  const WakeHandle m_Wake;  ///< something was posted, or Stop was called
  const WakeHandle m_Done;  ///< the thread's work is over
  std::thread m_Thread;

  // Used by the thread alone, once it runs.
  RunBook m_Book;  ///< except for what any thread may ask of it
  TaskRuns m_Runs;
  WallTimer m_PeriodTimer;
  std::vector<pollfd> m_Handles;
  std::optional<Run::Clock::time_point> m_GiveUpAt;  ///< once it is to stop

  mutable BaseSDK::AMutex m_Lock;
  std::vector<Order> m_Posted NOX_GUARDED_BY(m_Lock);
  bool m_IsBusy NOX_GUARDED_BY(m_Lock) = false;  ///< with runs, or with what it took from m_Posted
  bool m_Stop NOX_GUARDED_BY(m_Lock) = false;
};

}  // namespace NoxHandler
