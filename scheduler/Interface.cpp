// The operations of INoxTaskScheduler, but for the attributes.
#include "Common/Log.h"
#include "model/Task.h"
#include "model/TaskDocument.h"
#include "scheduler/TaskSchedulerObject.h"
#include "storage/TaskStorage.h"

#include <BaseSDK/AText.h>

#include <utility>
#include <vector>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

long TaskSchedulerObject_i::AddTask(const AString& taskID, const AString& taskXML,
                                    AString& newTaskID) {
  PLUGIN_LOG(Scheduler, Trace, AString(L"TaskSchedulerObject_i::AddTask(\"%1\")").Arg(taskID));
  AString storedXML;
  if (GetTaskXML(taskID, storedXML) < 0) {
    return AddNewTask(taskID, taskXML, newTaskID);
  }
  newTaskID = taskID;
  PLUGIN_LOG(
      Scheduler, Trace,
      AString(L"Task ID = %1 already exists, update its XML (only history must remain the same)")
          .Arg(taskID));
  AString newXML = taskXML;
  // An empty document has no history either.
  const AString history = CTaskDocument(storedXML).History();
  if (history.IsEmpty()) {
    PLUGIN_LOG(Scheduler, Trace, L"History node is empty\n");
  } else {
    PLUGIN_LOG(Scheduler, Trace, L"History node is not empty, moving it to the new XML\n");
    UpdateTaskHistoryNode(newXML, history);
  }
  return ReplaceTask(taskID, newXML);
}

long TaskSchedulerObject_i::AddNewTask(const AString& taskID, const AString& taskXML,
                                       AString& newTaskID) {
  PLUGIN_LOG(Scheduler, Trace,
             AString(L"Task ID = \"%1\" doesn't exist, create new one").Arg(taskID));
  const long result = WithLastError(m_Storage->AddTask(taskID, taskXML, newTaskID));
  if (result >= 1) {
    AMutexGuard guard(m_StateLock);
    StartTaskThread(newTaskID, taskXML);
  }
  return result;
}

long TaskSchedulerObject_i::ReplaceTask(const AString& taskID, const AString& taskXML) {
  const long result = WithLastError(m_Storage->SetTaskXML(taskID, taskXML));
  if (result < 1) {
    PLUGIN_LOG(Scheduler, Warning,
               AString(L"Failed to change task XML for the task ID = %1").Arg(taskID));
    return result;
  }
  AMutexGuard guard(m_StateLock);
  StartTaskThread(taskID, taskXML);
  return result;
}

long TaskSchedulerObject_i::DeleteTask(const AString& taskID) {
  const long result = WithLastError(m_Storage->DeleteTask(taskID));
  if (result >= 1) {
    AMutexGuard guard(m_StateLock);
    StopTaskThread(taskID);
  }
  return result;
}

long TaskSchedulerObject_i::GetTaskXML(const AString& taskID, AString& taskXML) {
  return WithLastError(m_Storage->GetTaskXML(taskID, taskXML));
}

long TaskSchedulerObject_i::FindFirstTask(unsigned long& handle, AString& taskID) {
  try {
    return WithLastError(m_Storage->FindFirstTask(handle, taskID));
  } catch (...) {
    // The exception keeps the handle from the caller, so it is closed here.
    m_Storage->FindClose(std::exchange(handle, 0));
    throw;
  }
}

long TaskSchedulerObject_i::FindNextTask(unsigned long handle, AString& taskID) {
  return WithLastError(m_Storage->FindNextTask(handle, taskID));
}

long TaskSchedulerObject_i::FindClose(unsigned long handle) {
  m_Storage->FindClose(handle);
  return 1;
}

long TaskSchedulerObject_i::WithLastError(long result) {
  m_LastError.store(m_Storage->m_LastError.load(std::memory_order_relaxed),
                    std::memory_order_relaxed);
  return result;
}

long TaskSchedulerObject_i::RefreshTaskList() {
  return m_MonitorThread.Wake();
}

long TaskSchedulerObject_i::SetRunState(const AString& taskID, const AString& runState) {
  // Kept on purpose: 0 for done, unlike the other operations. Callers rely on it.
  constexpr long Done = 0;
  constexpr long UnknownTask = 1;
  PLUGIN_LOG(Scheduler, Trace,
             AString(L"Try setting run state '%1' for task ID = %2").Arg(runState, taskID));
  AMutexGuard guard(m_StateLock);
  CTask* const task = m_Tasks.Find(taskID);
  if (task == nullptr) {
    return UnknownTask;
  }
  task->SetRunState(runState);
  return Done;
}

long TaskSchedulerObject_i::EnableTask(const AString& taskIDs, bool enable) {
  std::vector<AString> ids;
  BaseSDK::AText::StrToVector(taskIDs, L":", ids);
  long result = -1;
  {
    AMutexGuard guard(m_StateLock);
    for (const AString& taskID : ids) {
      CTask* const task = m_Tasks.Find(taskID);
      if (task != nullptr && task->Enable(enable) >= 0) {
        result = 1;
      }
    }
  }
  if (result == 1) {
    m_MonitorThread.Rouse();
  }
  return result;
}
