#pragma once

#include "Common/ThreadAnnotations.h"
#include "model/Task.h"
#include "scheduler/MonitorThread.h"
#include "scheduler/TaskSchedulerObject.h"

#include <BaseSDK/AString.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

/// One refresh cycle: the tasks in memory from their load to their purge. [monitor thread]
class CMonitorThread::Cycle {
 public:
  explicit Cycle(TaskSchedulerObject_i& scheduler) : m_Scheduler(scheduler) {}

  void Load() PLUGIN_EXCLUDES(m_Scheduler.m_StateLock);
  /// The batches of the tasks that are due now. Lowers `sleepSeconds` to the next run.
  RunBatch Evaluate(long& sleepSeconds) PLUGIN_EXCLUDES(m_Scheduler.m_StateLock);
  void Purge() PLUGIN_EXCLUDES(m_Scheduler.m_StateLock);

  /// No longer than to the cycle's end, and never negative.
  long BoundSleep(long sleepSeconds) const;
  /// The hour is over, or the clock has gone back before its beginning.
  bool IsOver() const;

 private:
  struct DueTest;

  void LoadTasks() PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  void LoadTask(const BaseSDK::AString& taskID) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  void EvaluateTask(CTask& task, long& sleepSeconds, RunBatch& batch,
                    std::vector<BaseSDK::AString>& expired)
      PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  DueTest TestTask(CTask& task, long& sleepSeconds) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  void DeleteExpiredTask(const BaseSDK::AString& taskID) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  void Retire(const BaseSDK::AString& taskID) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);

  TaskSchedulerObject_i& m_Scheduler;
  long m_Start = 0;
  long m_Deadline = 0;
  /// Tasks that left the map without being destroyed there: expired, or replaced at the load. They
  /// bring their nodes along, so that leaving takes no memory.
  std::multimap<BaseSDK::AString, std::unique_ptr<CTask>, std::less<BaseSDK::AString>> m_Retired;
};
