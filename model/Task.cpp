#include "model/Task.h"

#include "Common/Failure.h"
#include "Common/Log.h"
#include "Common/Long32.h"
#include "Common/Notifications.h"
#include "model/LocalTime.h"
#include "model/LocalZone.h"
#include "model/TaskDocument.h"
#include "scheduler/TaskSchedulerObject.h"
#include "storage/TaskStorage.h"

#include <BaseSDK/ADateTime.h>

#include <algorithm>
#include <memory>
#include <utility>

using BaseSDK::ADateTime;
using BaseSDK::AString;

CTask::CTask(TaskSchedulerObject_i* scheduler, const AString& taskID)
    : m_pScheduler(scheduler), m_TaskID(taskID) {}

// Delegates to the other constructor: if an exception ends this one, the destructor then deletes
// the triggers made so far.
CTask::CTask(TaskSchedulerObject_i* scheduler, const AString& taskID, const AString& taskXML)
    : CTask(scheduler, taskID) {
  m_TaskXML = taskXML;
  CTaskDocument document(taskXML);
  m_HandlerCLSID = document.HandlerClassId();
  m_Enabled = document.IsEnabled();
  const CTaskDocument::Run run = document.LastRun();
  ReadLastRun(run.m_Date, run.m_Time, run.m_State);
  for (const AString& element : document.Triggers()) {
    AddTrigger(element);
  }
  UpdateClosestRun();
}

CTask::~CTask() {
  for (const CTaskTrigger* trigger : m_Triggers) {
    delete trigger;
  }
}

/// A run that did not finish counts as none, so that the task is due for it again.
void CTask::ReadLastRun(const AString& date, const AString& time, const AString& state) {
  if (!state.IsEmpty() && state != L"Ok") {
    PLUGIN_LOG(Task, Warning,
               AString(L"Task '%1' did not finish last time, the last known state is '%2'")
                   .Arg(m_TaskID, state));
    return;
  }
  const long startTime = ADateTime(date + L" " + time).GetTime();
  m_LastRun = startTime == 0 ? CTaskTrigger::NoTime : startTime;
}

void CTask::AddTrigger(const AString& element) {
  auto trigger = std::make_unique<CTaskTrigger>(element, &m_LastRun);
  m_Triggers.push_back(trigger.get());
  (void)trigger.release();  // owned by m_Triggers from here on
}

bool CTask::IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late, bool& neverRun,
                  bool& allExpired, bool& deleteTask, bool& killAtEnd) {
  if (!m_Enabled) {
    m_Late = false;
    return false;
  }
  late = false;
  killAtEnd = false;
  neverRun = m_LastRun == CTaskTrigger::NoTime;
  if (IsQuiet(sleepSeconds)) {
    allExpired = false;
    deleteTask = false;
    m_Late = false;
    return false;
  }
  allExpired = true;
  deleteTask = true;
  bool due = false;
  bool asapDue = false;
  bool anyChange = false;
  for (CTaskTrigger* trigger : m_Triggers) {
    const bool asap = trigger->m_Type == CTaskTrigger::AsSoonAsPossible;
    bool triggerLate = false;
    bool expired = false;
    bool nextRunChanged = false;
    if (trigger->IsDue(firstEvent, secondEvent, sleepSeconds, triggerLate, expired,
                       nextRunChanged)) {
      due = true;
      asapDue = asapDue || asap;
      late = !asapDue && (late || triggerLate);
      killAtEnd = killAtEnd || trigger->m_KillAtEnd;
    }
    allExpired = allExpired && expired;
    deleteTask = deleteTask && allExpired && !asap;
    anyChange = anyChange || nextRunChanged;
  }
  m_Late = late;
  m_Quiet = {};  // the next runs are not as it left them
  if (!allExpired) {
    KeepWhileQuiet();
  }
  if (anyChange) {
    Nox::Announce(Nox::TaskChanged, m_TaskID);
  }
  return due;
}

/// Lowers the sleep as the triggers would.
bool CTask::IsQuiet(long& sleepSeconds) const {
  const CTaskTrigger::QuietTime& time = m_Quiet.m_Time;
  const long now = Nox::Now();
  const bool isQuiet = now >= time.m_Begin && now < time.m_End && m_LastRun == m_Quiet.m_LastRun &&
                       m_Quiet.m_Zone == &Nox::LocalZone::InForce();
  if (isQuiet && time.m_NextStart.has_value()) {
    sleepSeconds = std::min(sleepSeconds, Nox::Sub32(*time.m_NextStart, now));
  }
  return isQuiet;
}

/// As long as every trigger is quiet, which one that is due is not.
void CTask::KeepWhileQuiet() {
  CTaskTrigger::QuietTime all{Nox::Long32Min, Nox::Long32Max, std::nullopt};
  for (const CTaskTrigger* trigger : m_Triggers) {
    const CTaskTrigger::QuietTime time = trigger->KnownQuietTime();
    all.m_Begin = std::max(all.m_Begin, time.m_Begin);
    all.m_End = std::min(all.m_End, time.m_End);
    if (time.m_NextStart && *time.m_NextStart <= all.m_NextStart.value_or(Nox::Long32Max)) {
      all.m_NextStart = time.m_NextStart;
    }
  }
  m_Quiet = {all, &Nox::LocalZone::InForce(), m_LastRun};
}

/// The next due test thinks anew: at a moment before the quiet time, as after the clock was set
/// back, other next runs are found here.
void CTask::UpdateClosestRun() {
  m_Quiet = {};
  for (CTaskTrigger* trigger : m_Triggers) {
    trigger->UpdateClosestRun(m_Enabled);
  }
}

long CTask::Enable(bool enable) {
  if (m_Enabled == enable) {
    PLUGIN_LOG(Task, Trace, AString(L"Task '%1' enable state is not changed").Arg(m_TaskID));
    return -1;
  }
  try {
    m_Enabled = enable;
    const CTaskDocument document(m_TaskXML);
    return m_pScheduler->Storage()->SetTaskXML(m_TaskID,
                                               document.Rewritten(enable, document.History()));
  } catch (...) {
    m_Enabled = !enable;  // as the file says
    PLUGIN_LOG(Task, Warning,
               AString(L"Enable state of task ID = %1 could not be written: %2")
                   .Arg(m_TaskID, Nox::FailureText()));
    return -1;
  }
}

void CTask::RegisterRun() {
  const ADateTime now = ADateTime::Now();
  const AString startTime = now.ToString(L"%Y-%m-%d %H:%M:%S");
  WriteHistory(CTaskDocument::HistoryOf(startTime, L"Started"));
  m_LastRun = now.GetTime();
  PLUGIN_LOG(Task, Information, AString(L"Task ID = %1 was RUN on %2").Arg(m_TaskID, startTime));
}

void CTask::SetRunState(const AString& state) {
  PLUGIN_LOG(Task, Trace, AString(L"Set run state to '%1' for task ID = %2").Arg(state, m_TaskID));
  if (m_Late) {
    m_Late = false;
    Nox::Announce(Nox::TaskChanged, m_TaskID);
  }
  const CTaskDocument::Run run = CTaskDocument(m_TaskXML).LastRun();
  if (run.m_Date.IsEmpty()) {
    return;  // never ran
  }
  WriteHistory(CTaskDocument::HistoryOf(run.m_Date + L" " + run.m_Time, state));
}

/// Kept on purpose: the result of the write is not looked at. The run goes on whatever the disk
/// does, and memory remembers it until the next load. After an exception memory and file are both
/// as they were.
void CTask::WriteHistory(const AString& history) {
  AString document = m_TaskXML;
  TaskSchedulerObject_i::UpdateTaskHistoryNode(document, history);
  std::swap(m_TaskXML, document);
  try {
    (void)m_pScheduler->Storage()->SetTaskXML(m_TaskID, m_TaskXML);
  } catch (...) {
    std::swap(m_TaskXML, document);
    throw;
  }
}
