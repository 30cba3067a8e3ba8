#include "scheduler/MonitorThread.h"

#include "Common/Log.h"
#include "Common/Long32.h"
#include "model/LocalTime.h"
#include "model/Task.h"
#include "scheduler/TaskSchedulerObject.h"
#include "storage/TaskStorage.h"

#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/CIGetObjectInterface.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AClockSkewBehavior.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AUrl.h>

#include <ctime>
#include <memory>
#include <utility>
#include <vector>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using BaseSDK::AStringTokenizer;
using Corvane::AgentInterfacesV3::CIClient;
using Corvane::AgentInterfacesV3::CIGetObjectInterface;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;

namespace {

/// How long the tasks in memory are used before they are loaded again.
constexpr long CycleSeconds = 3600;
constexpr long MillisecondsPerSecond = 1000;

/// The host's number for a sleep that ends when the clock is set or the machine resumes, and with
/// the second that it is for.
constexpr auto MonitorSkewBehavior = static_cast<BaseSDK::AClockSkewBehavior>(15);

constexpr unsigned long NoOpenFlags = 0;

long Now() {
  return Nox::Clamp32(time(nullptr));
}

AString Count(std::size_t value) {
  return AString().SetNum(static_cast<unsigned long>(value), 'u');
}

long SecondsUntilMidnight() {
  const long now = Now();
  const std::time_t moment = now;
  std::tm fields{};
  localtime_r(&moment, &fields);
  fields.tm_mday += 1;
  fields.tm_hour = 0;
  fields.tm_min = 0;
  fields.tm_sec = 0;
  const long midnight = Nox::MakeTime32(fields);
  // The last day of 32-bit time has no midnight to wait for; the end of the cycle bounds the sleep.
  return Nox::Sub32(midnight == -1 ? Nox::Long32Max : midnight, now);
}

/// What a due test says about a task.
struct DueTest {
  bool m_Due = false;
  bool m_Late = false;
  bool m_NeverRun = false;
  bool m_AllExpired = false;
  bool m_DeleteTask = false;
  bool m_KillAtEnd = false;
};

AString BatchFlag(bool value) {
  return AString().SetNum(value ? 1 : 0, 'd');
}

AString BatchEntry(const AString& taskID, const DueTest& test) {
  return AString(L"%1:%2:%3:%4;")
      .Arg(BaseSDK::AUrl::Encode(taskID), BatchFlag(test.m_Late), BatchFlag(test.m_NeverRun),
           BatchFlag(test.m_KillAtEnd));
}

/// Whether the handler takes the batch; any result but the refusal of one of its two operations
/// does.
bool Accepts(INoxScheduledTaskHandler& handler, const AString& batchText) {
  const long result = handler.RunTasksEx(batchText);
  if (result == TASK_HANDLER_DECLINED) return false;
  return result > 0 || handler.RunTasks(batchText) != TASK_HANDLER_DECLINED;
}

}  // namespace

/// One refresh cycle: the tasks in memory from their load to their purge.
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
  bool IsOver() const { return Now() >= m_Deadline || Now() < m_Start; }

 private:
  void LoadTask(const AString& taskID) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  DueTest TestTask(CTask& task, long& sleepSeconds) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);
  void DeleteExpiredTask(const AString& taskID) PLUGIN_REQUIRES(m_Scheduler.m_StateLock);

  TaskSchedulerObject_i& m_Scheduler;
  long m_Start = 0;
  long m_Deadline = 0;
  /// Tasks that left the map without being destroyed there: expired, or replaced at the load.
  std::vector<std::unique_ptr<CTask>> m_Retired;
};

// A cycle loads all tasks, then goes round in iterations (evaluate, dispatch, sleep) until its hour
// is over, the clock has gone back before its beginning, or a stop is requested, and at last purges
// the task map. While the gate is closed an iteration only sleeps.
void CMonitorThread::Run() {
  do {
    m_Refresh.store(false, std::memory_order_relaxed);
    Cycle cycle(*m_pScheduler);
    cycle.Load();
    do {
      long sleepSeconds = SecondsUntilMidnight();
      if (m_pScheduler->IsProcessingEnabled()) DispatchTasks(cycle.Evaluate(sleepSeconds));
      Sleep(cycle.BoundSleep(sleepSeconds));
    } while (!IsStopRequested() && !cycle.IsOver());
    cycle.Purge();
  } while (!IsStopRequested());
  PLUGIN_LOG(Scheduler, Trace, L"Exiting the Task Thread.\n");
}

void CMonitorThread::DispatchTasks(const RunBatch& batch) {
  for (const auto& [handlerCLSID, batchText] : batch) DispatchBatch(handlerCLSID, batchText);
}

void CMonitorThread::DispatchBatch(const AString& handlerCLSID, const AString& batchText) {
  CIClient<INoxScheduledTaskHandler> handler;
  if (CIGetObjectInterface(handlerCLSID, INoxScheduledTaskHandler::GetIID(), NoOpenFlags,
                           handler.Slot()) < 0) {
    PLUGIN_LOG(Scheduler, Information,
               AString(L"Failed to open task handler ID = %1").Arg(handlerCLSID));
    return;
  }
  if (Accepts(*handler.Get(), batchText)) RecordAcceptedRuns(batchText);
}

void CMonitorThread::RecordAcceptedRuns(const AString& batchText) {
  constexpr int DropEmpty = 0;
  constexpr int FirstTwo = 2;
  const AStringTokenizer entries(batchText, L";");
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    const AStringTokenizer pieces(entries.Token(i), L":", DropEmpty, FirstTwo);
    // Kept on purpose: the ID stays URL-encoded, as handlers see it. A task whose ID the encoding
    // changes gets no run state from here; its handler reports it.
    (void)m_pScheduler->SetRunState(pieces.Token(0), L"Ok");
  }
}

void CMonitorThread::Sleep(long sleepSeconds) {
  PLUGIN_LOG(
      Scheduler, Trace,
      AString(L"Task Thread is sleeping for %1 seconds.").Arg(AString().SetNum(sleepSeconds, 'd')));
  // Whatever ends the wait, the next iteration finds out what there is to do.
  (void)m_WakeEvent.Wait(static_cast<unsigned long>(sleepSeconds) * MillisecondsPerSecond,
                         MonitorSkewBehavior);
}

bool CMonitorThread::IsStopRequested() const {
  return m_Stop.load(std::memory_order_relaxed);
}

void CMonitorThread::Cycle::Load() {
  {
    AMutexGuard guard(m_Scheduler.m_StateLock);
    PLUGIN_LOG(Scheduler, Trace, L"REFRESH TASK LIST!\n");
    CTaskStorage& storage = *m_Scheduler.Storage();
    unsigned long handle = 0;
    AString taskID;
    long found = storage.FindFirstTask(handle, taskID);
    while (found > 0) {
      LoadTask(taskID);
      found = storage.FindNextTask(handle, taskID);
    }
    storage.FindClose(handle);
  }
  m_Start = Now();
  m_Deadline = Nox::Add32(m_Start, CycleSeconds);
}

void CMonitorThread::Cycle::LoadTask(const AString& taskID) {
  AString taskXML;
  if (m_Scheduler.Storage()->GetTaskXML(taskID, taskXML) <= 0) return;
  auto task = m_Scheduler.MakeTask(taskID, taskXML);
  m_Scheduler.m_Tasks[taskID].swap(task);
  if (task != nullptr) m_Retired.push_back(std::move(task));
}

CMonitorThread::RunBatch CMonitorThread::Cycle::Evaluate(long& sleepSeconds) {
  AMutexGuard guard(m_Scheduler.m_StateLock);
  RunBatch batch;
  std::vector<AString> expired;
  for (const auto& [key, task] : m_Scheduler.m_Tasks) {
    if (task == nullptr) {
      PLUGIN_LOG(Scheduler, Information,
                 AString(L"Unexpected empty task '%1', total tasks - %2")
                     .Arg(key, Count(m_Scheduler.m_Tasks.size())));
      continue;
    }
    const AString taskID = task->m_TaskID;
    const DueTest test = TestTask(*task, sleepSeconds);
    if (test.m_Due) {
      batch[task->m_HandlerCLSID] += BatchEntry(taskID, test);
      task->RegisterRun();
    }
    if (test.m_AllExpired && test.m_DeleteTask) expired.push_back(taskID);
  }
  for (const AString& taskID : expired) DeleteExpiredTask(taskID);
  m_Scheduler.m_Notification302 = false;
  m_Scheduler.m_Notification300 = false;
  return batch;
}

DueTest CMonitorThread::Cycle::TestTask(CTask& task, long& sleepSeconds) {
  DueTest test;
  test.m_Due = task.IsDue(m_Scheduler.m_Notification302, m_Scheduler.m_Notification300,
                          sleepSeconds, test.m_Late, test.m_NeverRun, test.m_AllExpired,
                          test.m_DeleteTask, test.m_KillAtEnd);
  return test;
}

void CMonitorThread::Cycle::DeleteExpiredTask(const AString& taskID) {
  PLUGIN_LOG(Scheduler, Trace, AString(L"Task ID = %1 is expired, deleting it.").Arg(taskID));
  // A file that stays comes back with the next load; until then the task is gone.
  (void)m_Scheduler.Storage()->DeleteTask(taskID);
  // Kept on purpose: not destroyed here. A batch that names the task is yet to be dispatched.
  m_Retired.push_back(std::move(m_Scheduler.m_Tasks.extract(taskID).mapped()));
}

void CMonitorThread::Cycle::Purge() {
  AMutexGuard guard(m_Scheduler.m_StateLock);
  PLUGIN_LOG(Scheduler, Trace,
             AString(L"Deleting all (%1) task from the tasks list...")
                 .Arg(Count(m_Scheduler.m_Tasks.size())));
  m_Scheduler.m_Tasks.clear();
  m_Retired.clear();
}

long CMonitorThread::Cycle::BoundSleep(long sleepSeconds) const {
  // The clock stands at the end of 32-bit time. Nothing will be due, and there is no deadline left
  // to wait for: without this the monitor would go round without ever sleeping.
  if (Now() == Nox::Long32Max) return CycleSeconds;
  if (Nox::Add32(Now(), sleepSeconds) > m_Deadline) {
    sleepSeconds = Nox::Sub32(m_Deadline, Now());
  }
  return sleepSeconds < 0 ? 0 : sleepSeconds;
}
