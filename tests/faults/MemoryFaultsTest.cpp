// Memory running out at every allocation in turn: on the monitor's thread over a whole load, pass,
// dispatch and purge, and on a caller's over every operation. Nothing is lost, nothing runs twice,
// and the monitor goes on.
#include "model/Task.h"
#include "scheduler/TaskMap.h"
#include "tests/faults/FailingMemory.h"
#include "tests/faults/Rig.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/LockState.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AEvent.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

int waitsThatThrow = 0;

}  // namespace

// The linker sends the scheduler's waits here (--wrap). Virtual time takes memory where the real
// event takes none.
extern "C" {

using EventWait = int(BaseSDK::AEvent*, unsigned long, BaseSDK::AClockSkewBehavior);

EventWait __real__ZN7BaseSDK6AEvent4WaitEmNS_18AClockSkewBehaviorE;
EventWait __wrap__ZN7BaseSDK6AEvent4WaitEmNS_18AClockSkewBehaviorE;

int __wrap__ZN7BaseSDK6AEvent4WaitEmNS_18AClockSkewBehaviorE(BaseSDK::AEvent* event,
                                                             unsigned long milliseconds,
                                                             BaseSDK::AClockSkewBehavior behavior) {
  if (waitsThatThrow > 0) {
    --waitsThatThrow;
    throw std::runtime_error("no wait today");
  }
  const FailingMemory::Spared wait;
  return __real__ZN7BaseSDK6AEvent4WaitEmNS_18AClockSkewBehaviorE(event, milliseconds, behavior);
}

}  // extern "C"

namespace Faults {
namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::FakeHandler;
using TestSupport::TaskXml;
using TestSupport::TestScheduler;
using TestSupport::TriggerXml;

constexpr long Declined = Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;
constexpr const char* DecliningHandler = "{00000000-0000-0000-0000-0000000000D1}";

const std::vector<std::string> DueTasks = {"asap-task", "daily-task", "late-task"};

/// Under a sanitizer everything takes its time: of the allocations one in so many fails.
constexpr long Stride = NOX_MEMORY_STRIDE;

/// Files in memory stand in for the system's, which take none of the process's.
class SparedFiles : public TestSupport::ForwardingFileSystem {
 public:
  explicit SparedFiles(AFileSystem& below)
      : ForwardingFileSystem(below), m_Before(AFileSystem::Replace(this)) {}
  ~SparedFiles() override { (void)AFileSystem::Replace(m_Before); }

  int Open(const char* path, int flags, unsigned mode, int& fd) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Open(path, flags, mode, fd);
  }
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Read(fd, buffer, size, got);
  }
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Write(fd, data, size, written);
  }
  int Sync(int fd) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Sync(fd);
  }
  int Close(int fd) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Close(fd);
  }
  int SetMode(int fd, unsigned mode) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::SetMode(fd, mode);
  }
  int GetInfo(const char* path, Info& info) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::GetInfo(path, info);
  }
  int Rename(const char* from, const char* to, bool replace) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Rename(from, to, replace);
  }
  int Unlink(const char* path) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::Unlink(path);
  }
  int OpenDirectory(const char* path, unsigned long& handle) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::OpenDirectory(path, handle);
  }
  int ReadDirectory(unsigned long handle, const char*& name) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::ReadDirectory(handle, name);
  }
  int CloseDirectory(unsigned long handle) override {
    const FailingMemory::Spared wait;
    return ForwardingFileSystem::CloseDirectory(handle);
  }

 private:
  AFileSystem* const m_Before;
};

/// A rig whose tasks give the next load, at 09:00, and the pass after it something of everything to
/// do.
class FullRig : public Rig {
 public:
  FullRig() : m_Spared(Files()) {
    m_Declining.AnswerAlways(Declined, Declined);
    Scheduler().Host().AddHandler(DecliningHandler, m_Declining);
    Add("asap-task", TaskXml().With(TriggerXml::Asap()).LastRun("2005-02-28 12:00:00 Failed"));
    Add("daily-task",
        TaskXml()
            .With(TriggerXml::Daily("2005/02/01 09:00:00").EveryMinutes(90).ForMinutes(180))
            .LastRun("2005-02-28 12:00:00 Ok"));
    Add("late-task",
        TaskXml().With(TriggerXml::Daily("2005/02/01 08:30:00")).LastRun("2005-02-27 08:30:00 Ok"));
    Add("my task", TaskXml().With(TriggerXml::Asap()));
    Add("declined-task", TaskXml().With(TriggerXml::Asap()).Handler(DecliningHandler));
    Add("orphaned-task", TaskXml().With(TriggerXml::Asap()).Handler("{nobody}"));
    Add("later-task", TaskXml()
                          .With(TriggerXml::Weekly("2005/02/01 12:00:00", 4))
                          .With(TriggerXml::Daily("2005/02/01 13:00:00"))
                          .LastRun("2005-02-28 13:00:00 Ok"));
    Add("ended-task", TaskXml().With(TriggerXml::Daily("2005/01/01 08:00:00").End("2005-01-02")));
  }

  /// Written past the scheduler, so that the next load finds it.
  void Add(const std::string& id, const TaskXml& document) {
    WriteFile(id + ".vsk", document.Utf8());
  }

  /// How often the task was in a batch that its handler took.
  unsigned Runs(const std::string& id) {
    unsigned runs = 0;
    for (const std::string& batch : Scheduler().Batches()) {
      for (std::size_t at = (";" + batch).find(";" + id + ":"); at != std::string::npos;
           at = (";" + batch).find(";" + id + ":", at + 1)) {
        ++runs;
      }
    }
    return runs;
  }
  bool IsRecorded(const std::string& id) {
    return Look()[id + ".vsk"].find(" Ok</RunTime>") != std::string::npos;
  }
  FakeHandler& Declining() { return m_Declining; }

 private:
  FakeHandler m_Declining;
  SparedFiles m_Spared;
};

TEST(TaskMap, IsWalkedInItsOrderAlsoWithoutMemory) {
  TaskMap tasks;
  for (const wchar_t* const id : {L"b", L"a", L"c"}) {
    TaskMap::Map made;
    made[id] = nullptr;
    tasks.Insert(made.extract(made.begin()));
  }
  std::vector<const AString*> visited;
  visited.reserve(tasks.Count());
  FailingMemory::FailAt(1, FailingMemory::Mine, FailingMemory::FromThenOn);
  TaskMap::Walk walk(tasks);
  for (TaskMap::Entry entry; walk.Next(entry);) {
    visited.push_back(entry.m_ID);
  }
  EXPECT_TRUE(FailingMemory::Recover());
  ASSERT_EQ(visited.size(), 3U);
  EXPECT_EQ(*visited[0], L"a");
  EXPECT_EQ(*visited[1], L"b");
  EXPECT_EQ(*visited[2], L"c");
}

/// What must hold at any time while the monitor sleeps.
void ExpectSound(Rig& rig) {
  TaskSchedulerObject_i& object = rig.Scheduler().Object();
  EXPECT_TRUE(SCHEDULER_INSIDE(object, m_MonitorThread).IsRunning());
  EXPECT_TRUE(TestSupport::IsFree(SCHEDULER_INSIDE(object, m_StateLock)));
  EXPECT_TRUE(TestSupport::IsFree(SCHEDULER_INSIDE(object, m_CountLock)));
  for (const auto& [id, task] : SCHEDULER_INSIDE(object, m_Tasks).All()) {
    EXPECT_TRUE(task == nullptr || task->m_TaskID == id);
  }
  EXPECT_EQ(rig.OpenHandles(), 0U);
  EXPECT_TRUE(rig.Others().empty()) << testing::PrintToString(rig.Others());
}

void ExpectAllInMemory(Rig& rig) {
  for (const auto& file : rig.Look()) {
    const std::string id = file.first.substr(0, file.first.rfind('.'));
    const auto& tasks = SCHEDULER_INSIDE(rig.Scheduler().Object(), m_Tasks);
    EXPECT_NE(tasks.Find(AString::FromUtf8(id)), nullptr) << id;
  }
}

/// A load with all that follows, short of memory at the `number`th allocation alone or from there
/// on. False when there are not that many.
bool RunCycle(long number, FailingMemory::HowLong howLong) {
  SCOPED_TRACE("allocation " + std::to_string(number));
  FullRig rig;
  TestScheduler& scheduler = rig.Scheduler();
  scheduler.RunUntil("2005-03-01 08:59:59");
  FailingMemory::FailAt(number, FailingMemory::OfOthers, howLong);
  scheduler.RunUntil("2005-03-01 09:00:05");
  const bool hasFailed = FailingMemory::Recover();
  ExpectSound(rig);
  std::map<std::string, bool> isDone;
  for (const std::string& id : DueTasks) {
    EXPECT_LE(rig.Runs(id), 1U) << id << " ran twice for one start";
    isDone[id] = rig.Runs(id) == 1 && rig.IsRecorded(id);
    EXPECT_TRUE(hasFailed || isDone[id]) << id;
  }

  scheduler.RunUntil("2005-03-01 10:00:05");
  ExpectSound(rig);
  ExpectAllInMemory(rig);
  for (const std::string& id : DueTasks) {
    EXPECT_TRUE(rig.IsRecorded(id)) << id << " did not run";
    EXPECT_GE(rig.Runs(id), 1U) << id;
    const bool onlyOnce = isDone[id] || howLong == FailingMemory::Once;
    EXPECT_TRUE(!onlyOnce || rig.Runs(id) == 1) << id << " ran twice for one start";
  }
  EXPECT_FALSE(rig.Look().contains("ended-task.vsk"));
  const auto openings = scheduler.Host().Openings();
  EXPECT_EQ(scheduler.Handler().Releases() + rig.Declining().Releases(),
            std::count_if(openings.begin(), openings.end(),
                          [](const auto& opening) { return opening.m_Result >= 0; }));
  return hasFailed;
}

TEST(MemoryFaults, EveryAllocationOfALoadAPassADispatchAndAPurgeFailsOnce) {
  for (long number = 1; RunCycle(number, FailingMemory::Once); number += Stride) {
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

TEST(MemoryFaults, EveryAllocationOfALoadAPassADispatchAndAPurgeFailsAndAllAfterIt) {
  for (long number = 1; RunCycle(number, FailingMemory::FromThenOn); number += 3 * Stride) {
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

TEST(MemoryFaults, AnExceptionOfTheWaitCostsTheMonitorAnIteration) {
  FullRig rig;
  waitsThatThrow = 3;
  rig.Scheduler().RunUntil("2005-03-01 09:00:05");
  ExpectSound(rig);
  EXPECT_EQ(0, waitsThatThrow);
  EXPECT_EQ(3U, rig.Scheduler().Log().Count(
                    ALogger::Warning, L"An iteration of the task thread failed: no wait today"));
  EXPECT_EQ(1U, rig.Runs("daily-task"));
}

/// An operation on a caller's thread, in the words of its interface.
struct Call {
  friend std::ostream& operator<<(std::ostream& out, const Call& call) {
    return out << call.m_Name;
  }

  const char* m_Name;
  std::function<long(TaskSchedulerObject_i&)> m_Act;
  /// The result of success.
  long m_Done = 1;
};

/// Made before any memory fails, as they are by whoever calls.
struct Texts {
  const AString m_Known = L"known-task";
  const AString m_New = L"new-task";
  const AString m_Several = L"unknown-task:known-task";
  const AString m_Document = TaskXml().With(TriggerXml::Daily("2005/04/01 12:00:00")).Text();
  const AString m_State = L"Failed-for-some-reason";
  const AString m_Nothing{};
};

/// As a caller far away: of a call that ends in an exception it sees no handle.
long Enumerate(TaskSchedulerObject_i& object) {
  unsigned long handle = 0;
  AString id;
  long found = object.FindFirstTask(handle, id);
  const struct Closer {
    ~Closer() { (void)m_Object.FindClose(m_Handle); }
    TaskSchedulerObject_i& m_Object;
    unsigned long m_Handle;
  } closer{object, handle};
  while (found > 0) {
    found = object.FindNextTask(handle, id);
  }
  return 1;
}

std::vector<Call> Calls() {
  static const Texts texts;
  using Object = TaskSchedulerObject_i;
  return {
      {"AddNamed",
       [](Object& object) {
         AString id;
         return object.AddTask(texts.m_New, texts.m_Document, id);
       }},
      {"AddInvented",
       [](Object& object) {
         AString id;
         return object.AddTask(texts.m_Nothing, texts.m_Document, id);
       }},
      {"Replace",
       [](Object& object) {
         AString id;
         return object.AddTask(texts.m_Known, texts.m_Document, id);
       }},
      {"Disable", [](Object& object) { return object.EnableTask(texts.m_Several, false); }},
      {"SetState", [](Object& object) { return object.SetRunState(texts.m_Known, texts.m_State); },
       0},
      {"Delete", [](Object& object) { return object.DeleteTask(texts.m_Known); }},
      {"GetAttributes",
       [](Object& object) {
         Object::AttributeMap attributes;
         return object.GetTaskAttributes(texts.m_Known, attributes, nullptr);
       }},
      {"GetXml",
       [](Object& object) {
         AString document;
         return object.GetTaskXML(texts.m_Known, document);
       }},
      {"Report",
       [](Object& object) {
         AString report;
         return long{object.ObjectDebugInfo(report)};
       }},
      {"Enumerate", Enumerate},
  };
}

/// Files and memory, as they can be seen from outside.
struct World {
  Rig::Snapshot m_Files{};
  std::string m_Memory{};
};

/// A rig with a task in memory.
struct CallRig : FullRig {
  CallRig() {
    (void)Scheduler().AddTask(
        "known-task",
        TaskXml().With(TriggerXml::Daily("2005/02/01 12:00:00")).LastRun("2005-02-28 12:00:00 Ok"));
  }
  World See() {
    World world{Look(), Scheduler().Report()};
    for (const char* name : {"t0", "t3", "t5", "t6", "td0", "tr0"}) {
      world.m_Memory += Scheduler().Attribute("known-task", name) + ' ';
    }
    for (const auto& task : SCHEDULER_INSIDE(Scheduler().Object(), m_Tasks).All()) {
      if (task.second != nullptr) {
        world.m_Memory += task.second->m_TaskXML.ToUtf8();
      }
    }
    return world;
  }
};

class OperationFaults : public testing::TestWithParam<Call> {
 protected:
  /// False when there are not that many allocations.
  static bool Fail(long number) {
    SCOPED_TRACE(std::string(GetParam().m_Name) + ", allocation " + std::to_string(number));
    CallRig whole;
    const World before = whole.See();
    EXPECT_EQ(GetParam().m_Act(whole.Scheduler().Object()), GetParam().m_Done);
    whole.Scheduler().Clock().Settle();
    const World after = whole.See();

    CallRig rig;
    const unsigned rounds = Rounds(rig);
    bool isDone = false;
    FailingMemory::FailAt(number, FailingMemory::Mine, FailingMemory::Once);
    try {
      isDone = GetParam().m_Act(rig.Scheduler().Object()) == GetParam().m_Done;
    } catch (const std::bad_alloc&) {
      // The caller's to answer; the operation has not taken place.
    }
    const bool hasFailed = FailingMemory::Recover();
    rig.Scheduler().Clock().Settle();
    ExpectSound(rig);
    const World seen = rig.See();
    EXPECT_EQ(seen.m_Files, (isDone ? after : before).m_Files);
    const bool isMissing =
        rig.Scheduler().Log().CountContaining(L"Failed to allocate memory for new task ID = ") == 1;
    if (isMissing) {
      EXPECT_TRUE(isDone) << "the file is there";
      EXPECT_EQ(Rounds(rig), rounds + 1) << "the monitor is woken all the same";
    } else {
      EXPECT_EQ(seen.m_Memory, (isDone ? after : before).m_Memory);
    }
    rig.Scheduler().RunUntil("2005-03-01 09:00:05");
    ExpectSound(rig);
    ExpectAllInMemory(rig);
    return hasFailed;
  }

  static unsigned Rounds(Rig& rig) {
    return rig.Scheduler().Log().CountContaining(L"Task Thread is sleeping for ");
  }
};

TEST_P(OperationFaults, EveryAllocationFailsOnce) {
  for (long number = 1; Fail(number); ++number) {
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

std::string NameOf(const testing::TestParamInfo<Call>& info) {
  return info.param.m_Name;
}
INSTANTIATE_TEST_SUITE_P(Memory, OperationFaults, testing::ValuesIn(Calls()), NameOf);

TEST(MemoryFaults, NotificationsTakeEffectWithoutMemory) {
  FullRig rig;
  TestScheduler& scheduler = rig.Scheduler();
  const AString plugin = L"a plug-in of some name";
  const auto notify = [&](long kind, long code = 0) {
    FailingMemory::FailAt(1, FailingMemory::Mine, FailingMemory::FromThenOn);
    EXPECT_EQ(0, scheduler.Object().NotifyObject(kind, code, plugin)) << kind;
    EXPECT_TRUE(FailingMemory::Recover()) << "to log takes memory";
    scheduler.Clock().Settle();
    ExpectSound(rig);
    return scheduler.Report().find("is enabled") != std::string::npos;
  };
  EXPECT_FALSE(notify(1));
  EXPECT_TRUE(notify(0));
  EXPECT_FALSE(notify(4));
  EXPECT_FALSE(notify(6));
  EXPECT_FALSE(notify(7));
  EXPECT_TRUE(notify(5));
  EXPECT_FALSE(notify(1));
  EXPECT_TRUE(notify(2));
  EXPECT_TRUE(notify(10, 300));
}

TEST(MemoryFaults, ARequestIsAnsweredWithoutMemory) {
  using namespace Corvane::AgentInterfacesV3;
  CallRig rig;
  AMsgQueue queue(1);
  ASSERT_EQ(1, rig.Scheduler().Object().Open(1));
  const AString known = L"known-task";
  bool hasFailed = true;
  for (long number = 1; hasFailed; ++number) {
    AMsgReply reply;
    AMsgIn request("INoxTaskScheduler", "GetTaskXML", reply);
    request.Set("taskId", known);
    FailingMemory::FailAt(number, FailingMemory::Mine, FailingMemory::FromThenOn);
    const long result = queue.Send(request);
    hasFailed = FailingMemory::Recover();
    EXPECT_EQ(result, hasFailed ? -1 : 1) << number;
    EXPECT_TRUE(!hasFailed || reply.ErrorCode() == AMsgError::OperationFailed) << number;
  }
  queue.Close();
}

/// The plug-in as the agent loads it: every allocation of its start fails once.
TEST(MemoryFaults, EveryAllocationOfTheStartFailsOnceAndThePluginCanBeTakenDown) {
  bool hasFailed = true;
  for (long number = 1; hasFailed; ++number) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    FullRig rig;
    Corvane::AgentInterfacesV3::AMsgQueue queue(1);
    AString attribute;
    FailingMemory::FailAt(number, FailingMemory::Mine, FailingMemory::Once);
    const int initialized = PluginInitialize(1);
    const int told = PluginGetAttributeV3("InterfaceFactory", attribute);
    hasFailed = FailingMemory::Recover();
    EXPECT_TRUE(initialized == 1 || initialized == -1);
    EXPECT_TRUE(told == (attribute.IsEmpty() ? -1 : 1));
    EXPECT_TRUE(hasFailed || (initialized == 1 && told == 1));
    queue.Close();
    EXPECT_EQ(1, PluginUninitialize(true));
    EXPECT_EQ(0U, rig.Scheduler().Log().CountContaining(L"Failed to stop the thread"));
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

}  // namespace
}  // namespace Faults
