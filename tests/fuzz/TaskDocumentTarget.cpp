// A task document: loaded, asked, rewritten in every way, and loaded again.
#include "model/Task.h"
#include "model/TaskDocument.h"
#include "scheduler/TaskSchedulerObject.h"
#include "storage/TaskStorage.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/FakeHost.h"

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AMemoryFileSystem.h>
#include <BaseSDK/AXmlDoc.h>
#include <VirtualTime/VirtualClock.h>

#include <tuple>
#include <vector>

using BaseSDK::AString;
using BaseSDK::AXmlDoc;
using Fuzz::Require;

namespace {

/// A scheduler whose gate is closed, on files in memory: nobody but the target touches its tasks.
struct World {
  World() {
    m_Files.MakeDirectory("/tasks");
    (void)BaseSDK::AFileSystem::Replace(&m_Files);
    m_Host.SetConfig(L"Configuration", L"task_storage_path", L"/tasks");
    m_Host.SetConfig(L"Configuration", L"task_file_extension", L".vsk");
    Require(m_Scheduler.Initialize() >= 1, "the scheduler starts");
    VirtualTime::VirtualClock::Instance().Settle();
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() {
    (void)m_Scheduler.Uninitialize(1);
    (void)BaseSDK::AFileSystem::Replace(nullptr);
  }

  AString Stored(const CTask& task) {
    AString text;
    Require(m_Scheduler.Storage()->GetTaskXML(task.m_TaskID, text) == 1, "a rewrite is stored");
    return text;
  }

  BaseSDK::AMemoryFileSystem m_Files;
  TestSupport::FakeHost m_Host;
  TaskSchedulerObject_i m_Scheduler;
};

long Count(AXmlDoc& document, const AString& path) {
  long count = 0;
  for (bool found = document.Find(path) && document.Read(); found; found = document.Read()) {
    ++count;
  }
  return count;
}

/// At most one, and where it belongs.
bool StandsOnce(AXmlDoc& document, const wchar_t* name) {
  const long anywhere = Count(document, AString(L"//") + name);
  return anywhere <= 1 && Count(document, AString(L"/Task/") + name) == anywhere;
}

/// Whether a rewrite keeps all that the scheduler reads: queries look everywhere, but a rewrite
/// keeps the first of three elements alone.
bool IsOrderly(const AString& text) {
  AXmlDoc document(text);
  return StandsOnce(document, L"HandlerCLSID") && StandsOnce(document, L"Schedule") &&
         StandsOnce(document, L"TaskHistory") && Count(document, L"//HandlerCLSID/*") == 0 &&
         Count(document, L"//Trigger") == Count(document, L"/Task/Schedule//Trigger") &&
         Count(document, L"//RunTime") == Count(document, L"/Task/TaskHistory//RunTime");
}

std::vector<AString> All(AXmlDoc& document, const AString& xpath) {
  std::vector<AString> values;
  (void)document.Find(xpath);
  while (document.Read()) {
    values.push_back(document.GetValue());
  }
  return values;
}

/// A path in parentheses is an expression that only the XPath engine reads.
void RequireSameSelections(const AString& text) {
  AXmlDoc document(text);
  for (const wchar_t* const path :
       {L"/Task/@Enabled", L"//HandlerCLSID/text()", L"//RunTime/text()", L"//Trigger",
        L"//Trigger/@Description", L"/Task/Schedule/Trigger/BeginDate/text()"}) {
    Require(All(document, path) == All(document, AString(L"(") + path + L")"),
            "a plain path selects what the XPath engine selects");
  }
}

auto Definition(const CTaskTrigger& trigger) {
  return std::tie(trigger.m_Type, trigger.m_Interval, trigger.m_Duration, trigger.m_Disabled,
                  trigger.m_Description, trigger.m_KillAtEnd, trigger.m_BeginDate,
                  trigger.m_EndDate, trigger.m_DaysInterval, trigger.m_WeeksInterval,
                  trigger.m_DaysOfWeek, trigger.m_DaysOfMonth, trigger.m_MonthsOfYear,
                  trigger.m_Week);
}

void RequireSameTask(const CTask& one, const CTask& other) {
  Require(one.m_HandlerCLSID == other.m_HandlerCLSID, "a rewrite keeps the handler");
  Require(one.m_Enabled == other.m_Enabled, "a rewrite keeps the enabled state");
  Require(one.m_LastRun == other.m_LastRun, "a rewrite keeps the last run");
  Require(one.m_Triggers.size() == other.m_Triggers.size(), "a rewrite keeps the triggers");
  for (std::size_t i = 0; i < one.m_Triggers.size(); ++i) {
    Require(Definition(*one.m_Triggers[i]) == Definition(*other.m_Triggers[i]),
            "a rewrite keeps each trigger");
  }
}

void Ask(CTask& task) {
  long sleepSeconds = 86400;
  bool late = false, neverRun = false, allExpired = false, deleteTask = false, killAtEnd = false;
  const bool due =
      task.IsDue(false, false, sleepSeconds, late, neverRun, allExpired, deleteTask, killAtEnd);
  Require(task.m_Enabled || !due, "a disabled task is not due");
  Require(sleepSeconds > 0 && sleepSeconds <= 86400, "the sleep is only ever lowered");
  Require(allExpired || !deleteTask, "a task is deleted only when all its triggers have expired");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static World world;
  const AString text = Fuzz::Text(data, size);
  RequireSameSelections(text);
  CTask task(&world.m_Scheduler, L"t", text);
  Ask(task);

  AString rewritten = text;
  TaskSchedulerObject_i::UpdateTaskHistoryNode(rewritten, CTaskDocument(text).History());
  const bool isOrderly = IsOrderly(text);
  if (isOrderly) {
    RequireSameTask(task, CTask(&world.m_Scheduler, L"t", rewritten));
  }

  Require(task.Enable(!task.m_Enabled) == 1, "a task is switched");
  if (isOrderly) {
    RequireSameTask(task, CTask(&world.m_Scheduler, L"t", world.Stored(task)));
  }

  task.RegisterRun();
  task.SetRunState(L"Ok");
  Require(task.m_LastRun == Fuzz::StartTime, "a run is remembered");
  if (isOrderly) {
    const CTask again(&world.m_Scheduler, L"t", world.Stored(task));
    Require(again.m_LastRun == task.m_LastRun, "a finished run is stored");
    Require(again.m_Triggers.size() == task.m_Triggers.size(), "a run keeps the triggers");
  }
  world.m_Host.ClearNotifications();
  return 0;
}
