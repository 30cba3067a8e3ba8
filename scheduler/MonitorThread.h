#pragma once

#include "scheduler/TSThread.h"

#include <BaseSDK/ALtstr.h>
#include <BaseSDK/AMap.h>

/// The scheduler's one thread and the only one that runs tasks. In cycles of an hour at most it
/// loads every task from storage, and within a cycle it evaluates them again and again: it hands
/// due tasks to their handlers, deletes expired ones, and sleeps until the next run, local midnight
/// or the end of the cycle, whichever comes first. Being roused brings the next evaluation forward
/// and never the next load.
///
/// The state lock is held while loading, evaluating and purging, and not while a handler is called
/// or while sleeping.
class CMonitorThread : public CTSThread {
 public:
  using CTSThread::CTSThread;

  /// Returns after a stop request, with the task map empty. [monitor thread]
  void Run() override;

 private:
  /// Batch texts by the class identifier of their handler.
  using RunBatch = BaseSDK::Container::AMap<BaseSDK::AString, BaseSDK::AString, BaseSDK::ALtstr>;
  class Cycle;

  void DispatchTasks(const RunBatch& batch);
  void DispatchBatch(const BaseSDK::AString& handlerCLSID, const BaseSDK::AString& batchText);
  void RecordAcceptedRuns(const BaseSDK::AString& batchText);
  void Sleep(long sleepSeconds);
  bool IsStopRequested() const;
};
