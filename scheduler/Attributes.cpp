// A task's scheduling attributes, as GetTaskAttributes reports them.
#include "model/Task.h"
#include "model/TaskTrigger.h"
#include "scheduler/TaskSchedulerObject.h"

#include <utility>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace {

using AttributeMap = TaskSchedulerObject_i::AttributeMap;

AString Number(long value) {
  return AString().SetNum(value, 'd');
}
AString Number(int value) {
  return AString().SetNum(value, 'd');
}
AString Flag(bool value) {
  return Number(value ? 1 : 0);
}

/// A key that the map holds already keeps its value.
void Insert(AttributeMap& attributes, AString key, AString value) {
  (void)attributes.try_emplace(std::move(key), std::move(value));
}

/// What the triggers' run values say, and what they add up to.
class RunValues {
 public:
  explicit RunValues(bool taskEnabled) : m_TaskEnabled(taskEnabled) {}

  AString ValueOf(const CTaskTrigger& trigger) {
    if (!m_TaskEnabled) {
      return L"0";
    }
    if (trigger.m_Type == CTaskTrigger::FirstEvent) {
      m_FirstEvent = true;
      return L"2";
    }
    if (trigger.m_Type == CTaskTrigger::SecondEvent) {
      m_SecondEvent = true;
      return L"1";
    }
    if (trigger.m_ClosestRun <= 0) {
      return L"0";
    }
    if (m_Earliest == 0 || trigger.m_ClosestRun < m_Earliest) {
      m_Earliest = trigger.m_ClosestRun;
    }
    return Number(trigger.m_ClosestRun);
  }

  void InsertTotals(AttributeMap& attributes) const {
    Insert(attributes, L"t6", Number(m_Earliest));
    Insert(attributes, L"t7", Flag(m_SecondEvent));
    Insert(attributes, L"t8", Flag(m_FirstEvent));
  }

 private:
  bool m_TaskEnabled;
  bool m_FirstEvent = false;
  bool m_SecondEvent = false;
  long m_Earliest = 0;  // 0: none
};

void InsertTask(AttributeMap& attributes, const CTask& task) {
  Insert(attributes, L"t0", task.m_TaskID);
  Insert(attributes, L"t1", task.m_HandlerCLSID);
  Insert(attributes, L"t3", Number(task.m_LastRun));
  Insert(attributes, L"t5", Flag(task.m_Enabled));
  Insert(attributes, L"t2", Flag(task.m_Late));
}

void InsertTriggers(AttributeMap& attributes, const CTask& task) {
  RunValues values(task.m_Enabled);
  int index = 0;
  for (const auto& trigger : task.m_Triggers) {
    const AString number = Number(index++);
    Insert(attributes, AString(L"td%1").Arg(number), trigger->m_Description);
    Insert(attributes, AString(L"tr%1").Arg(number), values.ValueOf(*trigger));
  }
  values.InsertTotals(attributes);
}

}  // namespace

long TaskSchedulerObject_i::GetTaskAttributes(const AString& taskID, AttributeMap& attributes,
                                              const AttributeMap* /*inputAttributes*/) {
  AMutexGuard guard(m_StateLock);
  CTask* const task = m_Tasks.Find(taskID);
  if (task == nullptr) {
    return -1;
  }
  InsertTask(attributes, *task);
  task->UpdateClosestRun();
  InsertTriggers(attributes, *task);
  return 1;
}
