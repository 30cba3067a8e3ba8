#include "scheduler/MonitorThread.h"

#include "Common/Failure.h"
#include "Common/Log.h"
#include "Common/Long32.h"
#include "model/LocalTime.h"
#include "model/LocalZone.h"
#include "scheduler/MonitorCycle.h"
#include "scheduler/TaskSchedulerObject.h"

#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/CIGetObjectInterface.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AClockSkewBehavior.h>
#include <BaseSDK/AStringTokenizer.h>

#include <cstdint>
#include <ctime>
#include <vector>

using BaseSDK::AString;
using BaseSDK::AStringTokenizer;
using Corvane::AgentInterfacesV3::CIClient;
using Corvane::AgentInterfacesV3::CIGetObjectInterface;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;

namespace {

constexpr long MillisecondsPerSecond = 1000;

/// The host's number for a sleep that ends when the clock is set or the machine resumes, and with
/// the second that it is for.
constexpr auto MonitorSkewBehavior = static_cast<BaseSDK::AClockSkewBehavior>(15);

constexpr unsigned long NoOpenFlags = 0;

/// Midnight across a change of the clock, as mktime has it.
///
/// Kept on purpose: the daylight-saving flag stays that of today. On the day of a change, midnight
/// is then an hour off, and the monitor looks once more an hour later or earlier.
///
/// A day that the zone leaves out, when it moves to the other side of the date line, has no
/// midnight either: on 2011-12-30 in Apia mktime fails. The clock goes on from the evening before
/// to the midnight of the day after, and that is the one to wait for. Taken for a moment, the
/// failure would lie in the past, and the monitor would go round without sleeping until the day is
/// over.
///
/// The last day of 32-bit time has none at all: the end of the cycle bounds the sleep.
long MidnightAcrossChange(long now) {
  const std::time_t moment = now;
  std::tm today{};
  localtime_r(&moment, &today);
  today.tm_hour = 0;
  today.tm_min = 0;
  today.tm_sec = 0;
  std::int64_t midnight = -1;
  for (int days = 1; days <= 2 && midnight == -1; ++days) {
    std::tm fields = today;
    fields.tm_mday += days;
    midnight = std::mktime(&fields);
  }
  return midnight == -1 ? Nox::Long32Max : Nox::Clamp32(midnight);
}

long SecondsUntilMidnight() {
  const long now = Nox::Now();
  const Nox::LocalZone& zone = Nox::LocalZone::InForce();
  const long midnight = Nox::Add32(now, Nox::SecondsPerDay - zone.LocalTimeAt(now).m_Second);
  return Nox::Sub32(zone.IsSteady(now, midnight) ? midnight : MidnightAcrossChange(now), now);
}

/// The task IDs of a batch, URL-encoded as they stand in it.
std::vector<AString> TaskIDs(const AString& batchText) {
  constexpr int DropEmpty = 0;
  constexpr int FirstTwo = 2;
  const AStringTokenizer entries(batchText, L";");
  std::vector<AString> taskIDs;
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    taskIDs.push_back(AStringTokenizer(entries.Token(i), L":", DropEmpty, FirstTwo).Token(0));
  }
  return taskIDs;
}

/// Whether the handler takes the batch; any result but the refusal of one of its two operations
/// does.
bool Accepts(INoxScheduledTaskHandler& handler, const AString& batchText) {
  const long result = handler.RunTasksEx(batchText);
  if (result == TASK_HANDLER_DECLINED) {
    return false;
  }
  return result > 0 || handler.RunTasks(batchText) != TASK_HANDLER_DECLINED;
}

/// No failure of a part of an iteration ends the loop.
template <class Work>
void Outlive(Work work) {
  try {
    work();
  } catch (...) {
    PLUGIN_LOG(Scheduler, Warning,
               AString(L"An iteration of the task thread failed: %1").Arg(Nox::FailureText()));
  }
}

}  // namespace

// A cycle loads all tasks and then goes through iterations (evaluate, dispatch, sleep). It ends
// when its hour is over, when the clock was set back before its beginning, or when a stop is
// requested; then it purges the task map. While the gate is closed an iteration only sleeps.
void CMonitorThread::Run() {
  do {
    m_Refresh.store(false, std::memory_order_relaxed);
    Cycle cycle(*m_pScheduler);
    cycle.Load();
    do {
      Iterate(cycle);
    } while (!IsStopRequested() && !cycle.IsOver());
    cycle.Purge();
  } while (!IsStopRequested());
  PLUGIN_LOG(Scheduler, Trace, L"Exiting the Task Thread.\n");
}

void CMonitorThread::Iterate(Cycle& cycle) {
  // Once for all tasks: it is while the monitor sleeps that the zone changes, if ever.
  Outlive([] { Nox::LocalZone::Refresh(); });
  long sleepSeconds = Nox::SecondsPerDay;
  Outlive([&] {
    sleepSeconds = SecondsUntilMidnight();
    if (m_pScheduler->IsProcessingEnabled()) {
      DispatchTasks(cycle.Evaluate(sleepSeconds));
    }
  });
  // Sleeps after a failure too: one that lasts would otherwise make a loop without a pause.
  Outlive([&] { Sleep(cycle.BoundSleep(sleepSeconds)); });
}

void CMonitorThread::DispatchTasks(const RunBatch& batch) {
  for (const auto& [handlerCLSID, batchText] : batch) {
    if (batchText.empty()) {
      continue;  // none of its tasks could be registered
    }
    try {
      DispatchBatch(handlerCLSID, AString(batchText.c_str()));
    } catch (...) {
      PLUGIN_LOG(Scheduler, Warning,
                 AString(L"Task handler ID = %1 failed: %2").Arg(handlerCLSID, Nox::FailureText()));
    }
  }
}

void CMonitorThread::DispatchBatch(const AString& handlerCLSID, const AString& batchText) {
  // Taken apart before the call, because that needs memory: a batch that is accepted must be
  // recorded.
  const std::vector<AString> taskIDs = TaskIDs(batchText);
  CIClient<INoxScheduledTaskHandler> handler;
  const long opened = CIGetObjectInterface(handlerCLSID, INoxScheduledTaskHandler::GetIID(),
                                           NoOpenFlags, handler.Slot());
  if (opened < 0 || handler.Get() == nullptr) {
    PLUGIN_LOG(Scheduler, Information,
               AString(L"Failed to open task handler ID = %1").Arg(handlerCLSID));
    return;
  }
  if (!Accepts(*handler.Get(), batchText)) {
    return;
  }
  // Kept on purpose: the ID stays URL-encoded, as handlers see it. A task whose ID the encoding
  // changes gets no run state from here; its handler reports it.
  for (const AString& taskID : taskIDs) {
    RecordAcceptedRun(taskID);
  }
}

void CMonitorThread::RecordAcceptedRun(const AString& taskID) {
  // Worth a second try: a run without its state counts as unfinished, and runs again after the next
  // load.
  if (!TryToRecord(taskID)) {
    (void)TryToRecord(taskID);
  }
}

bool CMonitorThread::TryToRecord(const AString& taskID) {
  try {
    (void)m_pScheduler->SetRunState(taskID, L"Ok");
    return true;
  } catch (...) {
    PLUGIN_LOG(Scheduler, Warning,
               AString(L"Run state of task ID = %1 could not be recorded: %2")
                   .Arg(taskID, Nox::FailureText()));
    return false;
  }
}

void CMonitorThread::Sleep(long sleepSeconds) {
  PLUGIN_LOG(
      Scheduler, Trace,
      AString(L"Task Thread is sleeping for %1 seconds.").Arg(AString().SetNum(sleepSeconds, 'd')));
  // Why the wait ended does not matter: the next iteration finds out what there is to do.
  (void)m_WakeEvent.Wait(static_cast<unsigned long>(sleepSeconds) * MillisecondsPerSecond,
                         MonitorSkewBehavior);
}

bool CMonitorThread::IsStopRequested() const {
  return m_Stop.load(std::memory_order_relaxed);
}
