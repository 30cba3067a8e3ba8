#include "scheduler/MonitorCycle.h"

#include "Common/Failure.h"
#include "Common/Log.h"
#include "Common/Long32.h"
#include "model/LocalTime.h"
#include "storage/TaskStorage.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AUrl.h>

#include <new>
#include <string>
#include <utility>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Nox::Now;

namespace {

/// How long the tasks in memory are used before they are loaded again.
constexpr long CycleSeconds = 3600;

AString Count(std::size_t value) {
  return AString().SetNum(static_cast<unsigned long>(value), 'u');
}

AString BatchFlag(bool value) {
  return AString().SetNum(value ? 1 : 0, 'd');
}

AString BatchEntry(const AString& taskID, bool late, bool neverRun, bool killAtEnd) {
  return AString(L"%1:%2:%3:%4;")
      .Arg(BaseSDK::AUrl::Encode(taskID), BatchFlag(late), BatchFlag(neverRun),
           BatchFlag(killAtEnd));
}

/// The stored tasks, one after the other. Ends their enumeration in every case.
class StoredTasks {
 public:
  explicit StoredTasks(CTaskStorage& storage) : m_Storage(storage) {}
  StoredTasks(const StoredTasks&) = delete;
  StoredTasks& operator=(const StoredTasks&) = delete;
  ~StoredTasks() { m_Storage.FindClose(m_Handle); }

  /// False when there are no more. After an exception it goes on behind the entry that it cost.
  bool Next(AString& taskID) {
    const bool first = m_Handle == 0 && !m_Begun;
    const long found = first ? m_Storage.FindFirstTask(m_Handle, taskID)
                             : m_Storage.FindNextTask(m_Handle, taskID);
    m_Begun = true;
    return found > 0;
  }

 private:
  CTaskStorage& m_Storage;
  unsigned long m_Handle = 0;
  bool m_Begun = false;
};

}  // namespace

/// What a due test says about a task.
struct CMonitorThread::Cycle::DueTest {
  bool m_Due = false;
  bool m_Late = false;
  bool m_NeverRun = false;
  bool m_AllExpired = false;
  bool m_DeleteTask = false;
  bool m_KillAtEnd = false;
};

void CMonitorThread::Cycle::Load() {
  {
    AMutexGuard guard(m_Scheduler.m_StateLock);
    PLUGIN_LOG(Scheduler, Trace, L"REFRESH TASK LIST!\n");
    LoadTasks();
  }
  m_Start = Now();
  m_Deadline = Nox::Add32(m_Start, CycleSeconds);
}

void CMonitorThread::Cycle::LoadTasks() {
  // Only so many entries may fail: a directory that goes on failing must not hold the lock for
  // ever.
  constexpr int MaxFailures = 1000;
  StoredTasks stored(*m_Scheduler.Storage());
  AString taskID;
  for (int failures = 0; failures < MaxFailures;) {
    try {
      if (!stored.Next(taskID)) {
        return;
      }
      LoadTask(taskID);
    } catch (...) {
      ++failures;
      PLUGIN_LOG(Scheduler, Warning,
                 AString(L"A stored task could not be loaded: %1").Arg(Nox::FailureText()));
    }
  }
}

void CMonitorThread::Cycle::LoadTask(const AString& taskID) {
  AString taskXML;
  if (m_Scheduler.Storage()->GetTaskXML(taskID, taskXML) <= 0) {
    return;
  }
  auto task = m_Scheduler.MakeTask(taskID, taskXML);
  if (task.empty()) {
    throw std::bad_alloc();
  }
  // A place without a task is logged at every pass.
  Retire(taskID);
  m_Scheduler.m_Tasks.Insert(std::move(task));
}

/// Takes the task, if there is one, out of the map.
void CMonitorThread::Cycle::Retire(const AString& taskID) {
  m_Retired.insert(m_Scheduler.m_Tasks.Extract(taskID));
}

CMonitorThread::RunBatch CMonitorThread::Cycle::Evaluate(long& sleepSeconds) {
  AMutexGuard guard(m_Scheduler.m_StateLock);
  RunBatch batch;
  std::vector<AString> expired;
  TaskMap::Walk walk(m_Scheduler.m_Tasks);
  for (TaskMap::Entry entry; walk.Next(entry);) {
    if (entry.m_Task == nullptr) {
      PLUGIN_LOG(Scheduler, Information,
                 AString(L"Unexpected empty task '%1', total tasks - %2")
                     .Arg(*entry.m_ID, Count(m_Scheduler.m_Tasks.Count())));
      continue;
    }
    try {
      EvaluateTask(*entry.m_Task, sleepSeconds, batch, expired);
    } catch (...) {
      PLUGIN_LOG(Scheduler, Warning,
                 AString(L"Task ID = %1 missed its turn: %2").Arg(*entry.m_ID, Nox::FailureText()));
    }
  }
  for (const AString& taskID : expired) {
    DeleteExpiredTask(taskID);
  }
  m_Scheduler.m_Notification302 = false;
  m_Scheduler.m_Notification300 = false;
  return batch;
}

/// An exception leaves the task out of the batch and its run unregistered, so that it is due again.
void CMonitorThread::Cycle::EvaluateTask(CTask& task, long& sleepSeconds, RunBatch& batch,
                                         std::vector<AString>& expired) {
  const AString& taskID = task.m_TaskID;
  const DueTest test = TestTask(task, sleepSeconds);
  if (test.m_Due) {
    std::wstring& batchText = batch[task.m_HandlerCLSID];
    const AString entry = BatchEntry(taskID, test.m_Late, test.m_NeverRun, test.m_KillAtEnd);
    // The room is made first, so a run that is registered gets into the batch, and only once.
    batchText.reserve(batchText.size() + entry.Length());
    task.RegisterRun();
    batchText += entry.c_str();
  }
  if (test.m_AllExpired && test.m_DeleteTask) {
    expired.push_back(taskID);
  }
}

CMonitorThread::Cycle::DueTest CMonitorThread::Cycle::TestTask(CTask& task, long& sleepSeconds) {
  DueTest test;
  test.m_Due = task.IsDue(m_Scheduler.m_Notification302, m_Scheduler.m_Notification300,
                          sleepSeconds, test.m_Late, test.m_NeverRun, test.m_AllExpired,
                          test.m_DeleteTask, test.m_KillAtEnd);
  return test;
}

void CMonitorThread::Cycle::DeleteExpiredTask(const AString& taskID) {
  PLUGIN_LOG(Scheduler, Trace, AString(L"Task ID = %1 is expired, deleting it.").Arg(taskID));
  // If the file cannot be deleted, the task comes back with the next load; until then it is gone.
  try {
    (void)m_Scheduler.Storage()->DeleteTask(taskID);
  } catch (...) {
    PLUGIN_LOG(Scheduler, Warning,
               AString(L"Task ID = %1 could not be deleted: %2").Arg(taskID, Nox::FailureText()));
  }
  // Kept on purpose: not destroyed here. A batch that names the task is yet to be dispatched.
  Retire(taskID);
}

void CMonitorThread::Cycle::Purge() {
  AMutexGuard guard(m_Scheduler.m_StateLock);
  PLUGIN_LOG(Scheduler, Trace,
             AString(L"Deleting all (%1) task from the tasks list...")
                 .Arg(Count(m_Scheduler.m_Tasks.Count())));
  m_Scheduler.m_Tasks.Clear();
  m_Retired.clear();
}

bool CMonitorThread::Cycle::IsOver() const {
  return Now() >= m_Deadline || Now() < m_Start;
}

long CMonitorThread::Cycle::BoundSleep(long sleepSeconds) const {
  // The clock stands at the end of 32-bit time. Nothing will be due, and there is no deadline left
  // to wait for: without this the monitor would go round without ever sleeping.
  if (Now() == Nox::Long32Max) {
    return CycleSeconds;
  }
  if (Nox::Add32(Now(), sleepSeconds) > m_Deadline) {
    sleepSeconds = Nox::Sub32(m_Deadline, Now());
  }
  return sleepSeconds < 0 ? 0 : sleepSeconds;
}
