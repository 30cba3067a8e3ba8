// The tasks in memory: single changes, each of which rouses the monitor.
#include "Common/Log.h"
#include "model/Task.h"
#include "scheduler/TaskSchedulerObject.h"

#include <memory>
#include <utility>

using BaseSDK::AString;

void TaskSchedulerObject_i::StartTaskThread(const AString& taskID, const AString& taskXML) {
  // The old task goes first, so that an allocation that fails leaves none rather than a stale one.
  m_Tasks.erase(taskID);
  TaskMap::node_type task = MakeTask(taskID, taskXML);
  if (!task.empty() && task.mapped() != nullptr) {
    m_Tasks.insert(std::move(task));
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

TaskSchedulerObject_i::TaskMap::node_type TaskSchedulerObject_i::MakeTask(const AString& taskID,
                                                                          const AString& taskXML) {
  TaskMap made;
  try {
    std::unique_ptr<CTask>& task = made[taskID];
    task = std::make_unique<CTask>(this, taskID, taskXML);
  } catch (...) {
    // As far as it came: perhaps a place without a task.
  }
  return made.empty() ? TaskMap::node_type() : made.extract(made.begin());
}

CTask* TaskSchedulerObject_i::FindTask(const AString& taskID) const {
  const auto entry = m_Tasks.find(taskID);
  return entry == m_Tasks.end() ? nullptr : entry->second.get();
}
