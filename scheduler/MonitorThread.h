#pragma once

#include "scheduler/TSThread.h"

#include <BaseSDK/ALtstr.h>
#include <BaseSDK/AMap.h>

#include <string>

/// The scheduler's one thread and the only one that runs tasks. In cycles of an hour at most it
/// loads every task from storage, and within a cycle it evaluates them again and again: it hands
/// due tasks to their handlers, deletes expired ones, and sleeps until the next run, local midnight
/// or the end of the cycle, whichever comes first. Being roused brings the next evaluation forward
/// and never the next load.
///
/// The state lock is held while loading, evaluating and purging, and not while a handler is called
/// or while sleeping.
///
/// No failure ends the loop. What goes wrong with one task, out of memory or otherwise, costs
/// that task its turn: it is loaded at the next load, or run at the next iteration. What goes wrong
/// while a handler is called drops the batch, as when the handler does not open.
class CMonitorThread : public CTSThread {
 public:
  using CTSThread::CTSThread;

  /// Returns after a stop request, with the task map empty. [monitor thread]
  void Run() override;

 private:
  /// Batch texts by the class identifier of their handler. Strings of the standard library while
  /// they grow, for room can be made in one before it is needed.
  using RunBatch = BaseSDK::Container::AMap<BaseSDK::AString, std::wstring, BaseSDK::ALtstr>;
  class Cycle;

  void Iterate(Cycle& cycle);
  void DispatchTasks(const RunBatch& batch);
  void DispatchBatch(const BaseSDK::AString& handlerCLSID, const BaseSDK::AString& batchText);
  void RecordAcceptedRun(const BaseSDK::AString& taskID);
  bool TryToRecord(const BaseSDK::AString& taskID);
  void Sleep(long sleepSeconds);
  bool IsStopRequested() const;
};
