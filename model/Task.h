#pragma once

#include "model/TaskTrigger.h"

#include <BaseSDK/AString.h>

#include <vector>

class TaskSchedulerObject_i;

/// One scheduled task in memory: its document, its last run and its triggers.
///
/// A task has no lock of its own: every call, and every look at a member, is made with the
/// scheduler's state lock held. Enable, RegisterRun and SetRunState write the task's file and take
/// the storage's lock for that.
class CTask {
 public:
  /// A document that cannot be read makes an enabled task without triggers, which is never due and
  /// asks to be deleted at its first due test. Fails only when memory runs out, with an exception.
  /// `scheduler` is borrowed; it and its storage must outlive the task.
  CTask(TaskSchedulerObject_i* scheduler, const BaseSDK::AString& taskID,
        const BaseSDK::AString& taskXML);
  CTask(const CTask&) = delete;  // the triggers point to m_LastRun
  CTask& operator=(const CTask&) = delete;
  ~CTask();

  /// Whether any trigger is due now; posts notification 100 when a next run has moved.
  /// `sleepSeconds` is lowered to the earliest next start, never raised. The other
  /// arguments are answers; a disabled task is not due and writes none of them:
  ///
  /// - `late`: a due trigger missed its time, and no trigger that runs as soon as possible is due;
  /// - `neverRun`: there is no finished run;
  /// - `allExpired`: no trigger fires again;
  /// - `deleteTask`: no trigger fires again, and none is one that runs as soon as possible;
  /// - `killAtEnd`: a due trigger wants the run to end with its active period.
  bool IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late, bool& neverRun,
             bool& allExpired, bool& deleteTask, bool& killAtEnd);

  /// Refreshes the next and the closest run of every trigger.
  void UpdateClosestRun();

  /// Writes the enabled state into the task's file and returns the storage's result; -1 when the
  /// task is in that state already, or when there is no memory for the change: it is then as it
  /// was. m_TaskXML and the triggers stay as they are in any case: the caller has the task loaded
  /// again.
  long Enable(bool enable);

  /// Records that a run starts now, in memory and in the file. A file that cannot be written stays
  /// as it was, and nobody is told. An exception means that nothing has been recorded anywhere.
  void RegisterRun();

  /// Replaces the state of the latest run, "Started" until now, in memory and in the file; nothing
  /// is written for a task that never ran. `state` is one word without markup: it is written as it
  /// is. "Ok" marks a finished run; after any other state the next load takes the run for
  /// unfinished. An exception means that the entry is as it was.
  void SetRunState(const BaseSDK::AString& state);

  TaskSchedulerObject_i* m_pScheduler;  ///< borrowed
  BaseSDK::AString m_TaskID;
  BaseSDK::AString m_TaskXML;
  BaseSDK::AString m_HandlerCLSID;
  long m_LastRun = CTaskTrigger::NoTime;  ///< also NoTime when the last run did not finish
  std::vector<CTaskTrigger*> m_Triggers;  ///< owned, in document order
  bool m_Enabled = true;
  bool m_Late = false;  ///< the last due test found the task late; until a run state is set

 private:
  /// A time in which no trigger is due and not all have expired. A pass over many tasks looks at
  /// little else, so it lies beside what else the pass needs.
  struct QuietSpell {
    CTaskTrigger::QuietTime m_Time;
    const Nox::LocalZone* m_Zone = nullptr;
    long m_LastRun = CTaskTrigger::NoTime;
  };

  CTask(TaskSchedulerObject_i* scheduler, const BaseSDK::AString& taskID);

  bool IsQuiet(long& sleepSeconds) const;
  void KeepWhileQuiet();

  void ReadLastRun(const BaseSDK::AString& date, const BaseSDK::AString& time,
                   const BaseSDK::AString& state);
  void AddTrigger(const BaseSDK::AString& element);
  void WriteHistory(const BaseSDK::AString& history);

  QuietSpell m_Quiet;
};
