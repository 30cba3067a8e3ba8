// The tasks in memory, and single changes of them, each of which rouses the monitor.
#include "scheduler/TaskMap.h"

#include "Common/Log.h"
#include "model/Task.h"
#include "scheduler/TaskSchedulerObject.h"

#include <memory>
#include <new>
#include <utility>

using BaseSDK::AString;

CTask* TaskMap::Find(const AString& taskID) const {
  const auto entry = m_Tasks.find(taskID);
  return entry == m_Tasks.end() ? nullptr : entry->second.get();
}

void TaskMap::Insert(Node task) {
  m_IsListed = false;
  m_Tasks.insert(std::move(task));
}

TaskMap::Node TaskMap::Extract(const AString& taskID) {
  m_IsListed = false;
  return m_Tasks.extract(taskID);
}

void TaskMap::Clear() {
  m_Tasks.clear();
  m_List = {};
  m_IsListed = false;
}

bool TaskMap::MakeList() {
  if (m_IsListed) {
    return true;
  }
  try {
    m_List.clear();
    m_List.reserve(m_Tasks.size());
    for (const auto& [taskID, task] : m_Tasks) {
      m_List.push_back({&taskID, task.get()});
    }
    m_IsListed = true;
  } catch (const std::bad_alloc&) {
    m_List = {};
  }
  return m_IsListed;
}

TaskMap::Walk::Walk(TaskMap& tasks)
    : m_Tasks(tasks), m_HasList(tasks.MakeList()), m_Node(tasks.m_Tasks.begin()) {}

bool TaskMap::Walk::Next(Entry& entry) {
  if (m_Place == m_Tasks.Count()) {
    return false;
  }
  if (m_HasList) {
    entry = m_Tasks.m_List[m_Place];
  } else {
    entry = {&m_Node->first, m_Node->second.get()};
    ++m_Node;
  }
  ++m_Place;
  return true;
}

void TaskSchedulerObject_i::StartTaskThread(const AString& taskID, const AString& taskXML) {
  // The old task goes first, so that an allocation that fails leaves none rather than a stale one.
  (void)m_Tasks.Extract(taskID);
  TaskMap::Node task = MakeTask(taskID, taskXML);
  if (!task.empty() && task.mapped() != nullptr) {
    m_Tasks.Insert(std::move(task));
  } else {
    PLUGIN_LOG(Scheduler, Information,
               AString(L"Failed to allocate memory for new task ID = %1.").Arg(taskID));
  }
  m_MonitorThread.Rouse();
}

void TaskSchedulerObject_i::StopTaskThread(const AString& taskID) {
  (void)m_Tasks.Extract(taskID);
  m_MonitorThread.Rouse();
}

TaskMap::Node TaskSchedulerObject_i::MakeTask(const AString& taskID, const AString& taskXML) {
  TaskMap::Map made;
  try {
    std::unique_ptr<CTask>& task = made[taskID];
    task = std::make_unique<CTask>(this, taskID, taskXML);
  } catch (...) {
    // As far as it came: perhaps a place without a task.
  }
  return made.empty() ? TaskMap::Node() : made.extract(made.begin());
}
