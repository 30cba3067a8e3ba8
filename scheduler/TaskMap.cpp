// The tasks in memory: single changes, each of which rouses the monitor.
#include "Common/Log.h"
#include "model/Task.h"
#include "scheduler/TaskSchedulerObject.h"

#include <new>
#include <utility>

using BaseSDK::AString;

void TaskSchedulerObject_i::StartTaskThread(const AString& taskID, const AString& taskXML) {
  // The old task goes first, so that an allocation that fails leaves none rather than a stale one.
  m_Tasks.erase(taskID);
  std::unique_ptr<CTask> task = MakeTask(taskID, taskXML);
  if (task != nullptr) {
    m_Tasks[taskID] = std::move(task);
  } else {
    PLUGIN_LOG(Scheduler, Information,
               AString(L"Failed to allocate memory for new task ID = %1.").Arg(taskID));
  }
  m_MonitorThread.Rouse();
}

void TaskSchedulerObject_i::StopTaskThread(const AString& taskID) {
  m_Tasks.erase(taskID);
  m_MonitorThread.Rouse();
}

std::unique_ptr<CTask> TaskSchedulerObject_i::MakeTask(const AString& taskID,
                                                       const AString& taskXML) {
  return std::unique_ptr<CTask>(new (std::nothrow) CTask(this, taskID, taskXML));
}

CTask* TaskSchedulerObject_i::FindTask(const AString& taskID) const {
  const auto entry = m_Tasks.find(taskID);
  return entry == m_Tasks.end() ? nullptr : entry->second.get();
}
