// The operations of INoxTaskScheduler, on real tasks and files.
#include "storage/TaskStorage.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <BaseSDK/AResult.h>

#include <cerrno>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;

const char LaterTrigger[] = "2030-01-01 08:00:00";

class InterfaceTest : public SchedulerFixture {
 protected:
  InterfaceTest() { StartWithOpenGate(); }

  static std::string Later() { return Task(Daily(LaterTrigger)); }

  long Add(const wchar_t* taskID, const std::string& document) {
    const long result = m_Scheduler->AddTask(taskID, AString::FromUtf8(document), m_NewID);
    Clock().Settle();
    return result;
  }
  unsigned long LastError() const { return SCHEDULER_INSIDE(*m_Scheduler, m_LastError); }
  bool Traced(const wchar_t* message) const { return Logged(ALogger::Trace, message); }
  /// The monitor's rounds during `action`.
  template <class Action>
  unsigned Rounds(Action action) {
    const unsigned before = Iterations();
    action();
    Clock().Settle();
    return Iterations() - before;
  }

  AString m_NewID{L"before"};
};

TEST_F(InterfaceTest, AddTaskInventsAnIdForAnEmptyOne) {
  EXPECT_EQ(1, Add(L"", Later()));
  EXPECT_EQ(0U, m_NewID.Find(L"corvane_task_"));
  EXPECT_EQ(Later(), Stored(m_NewID.ToUtf8()));
  EXPECT_TRUE(Knows(m_NewID.c_str()));
  EXPECT_TRUE(Traced(L"TaskSchedulerObject_i::AddTask(\"\")"));
  EXPECT_TRUE(Traced(L"Task ID = \"\" doesn't exist, create new one"));
  EXPECT_EQ(0U, LastError());
}

TEST_F(InterfaceTest, AddTaskStoresANewTaskUnderItsIdAndPutsItIntoMemory) {
  EXPECT_EQ(1U, Rounds([this] { EXPECT_EQ(1, Add(L"T1", Later())); }));
  EXPECT_EQ(AString(L"T1"), m_NewID);
  EXPECT_EQ(Later(), Stored("T1"));
  EXPECT_TRUE(Knows(L"T1"));
  EXPECT_TRUE(Traced(L"TaskSchedulerObject_i::AddTask(\"T1\")"));
  EXPECT_TRUE(Traced(L"Task ID = \"T1\" doesn't exist, create new one"));
  EXPECT_EQ(1U, m_Host.CountNotifications(102, L"T1"));
}

TEST_F(InterfaceTest, AddTaskThatFailsToStoreLeavesMemoryAlone) {
  EXPECT_EQ(0U, Rounds([this] { EXPECT_EQ(-1, Add(L"T1", "")); }));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, LastError());
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ(AString(L"before"), m_NewID);
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts());
}

TEST_F(InterfaceTest, AddTaskOfAnExistingTaskWithoutHistoryStoresTheDocumentAsItIs) {
  const std::string document =
      "<!-- mine -->" + Task(Daily(LaterTrigger), History("2001-01-01 01:01:01 Ok"));
  Store("T1", Later());
  EXPECT_EQ(1, Add(L"T1", document));
  EXPECT_EQ(AString(L"T1"), m_NewID);
  EXPECT_EQ(document, Stored("T1"));
  EXPECT_TRUE(
      Traced(L"Task ID = T1 already exists, update its XML (only history must remain the same)"));
  EXPECT_TRUE(Traced(L"History node is empty\n"));
  EXPECT_EQ(1U, m_Host.CountNotifications(100, L"T1"));
}

TEST_F(InterfaceTest, AddTaskOfAnExistingEmptyFileStoresTheDocumentAsItIs) {
  Store("T1", "");
  EXPECT_EQ(1, Add(L"T1", Later()));
  EXPECT_EQ(Later(), Stored("T1"));
  EXPECT_TRUE(Traced(L"History node is empty\n"));
}

TEST_F(InterfaceTest, AddTaskOfAnExistingTaskCarriesItsHistoryIntoTheNewDocument) {
  const std::string history = History("2005-02-28 08:00:00 Ok");
  Store("T1", Task(Daily(LaterTrigger), history));
  const std::string added = "<Task Owner=\"me\" Enabled=\"0\"><Extra/>" +
                            History("2001-01-01 01:01:01 Failed") +
                            "<HandlerCLSID>{B}</HandlerCLSID><Schedule></Schedule></Task>";
  EXPECT_EQ(1, Add(L"T1", added));
  EXPECT_EQ(
      "<Task Enabled=\"0\">\n\t<HandlerCLSID>{B}</HandlerCLSID>\n\t<Schedule></Schedule>\n\t" +
          history + "\n</Task>",
      Stored("T1"));
  EXPECT_TRUE(Traced(L"History node is not empty, moving it to the new XML\n"));
  TaskSchedulerObject_i::AttributeMap attributes;
  EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, nullptr));
  EXPECT_EQ(AString(L"1109577600"), attributes[L"t3"]) << "in memory, too: 2005-02-28 08:00:00";
}

TEST_F(InterfaceTest, AddTaskThatCannotReplaceWarnsAndLeavesMemoryAlone) {
  Store("T1", Later());
  EXPECT_EQ(0U, Rounds([this] { EXPECT_EQ(-1, Add(L"T1", "")); }));
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{"Failed to change task XML for the task ID = T1"});
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, LastError());
  EXPECT_FALSE(Knows(L"T1")) << "it was never loaded";
  EXPECT_EQ(AString(L"T1"), m_NewID);
  EXPECT_EQ(Later(), Stored("T1"));
}

TEST_F(InterfaceTest, AddTaskOfAnEmptyDocumentOverOneWithHistoryMakesATaskOfTheHistoryAlone) {
  // The rewrite makes a document of nothing but the history, so there is something to store. The
  // gate is closed, or the monitor would delete a task without triggers at once.
  Notify(1);
  const std::string history = History("2005-02-28 08:00:00 Ok");
  Store("T1", Task(Daily(LaterTrigger), history));
  EXPECT_EQ(1, m_Scheduler->AddTask(L"T1", L"", m_NewID));
  EXPECT_EQ("<Task Enabled=\"1\">\n\t\n\t\n\t" + history + "\n</Task>", Stored("T1"));
}

TEST_F(InterfaceTest, DeleteTaskTakesTheTaskFromDiskAndMemory) {
  EXPECT_EQ(1, Add(L"T1", Later()));
  EXPECT_EQ(1U, Rounds([this] { EXPECT_EQ(1, m_Scheduler->DeleteTask(L"T1")); }));
  EXPECT_FALSE(m_Directory.Has("T1.vsk"));
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ(1U, m_Host.CountNotifications(101, L"T1"));
}

TEST_F(InterfaceTest, DeleteTaskWithoutFileFailsAndLeavesTheTaskInMemory) {
  EXPECT_EQ(1, Add(L"T1", Later()));
  std::filesystem::remove(m_Directory / "T1.vsk");
  EXPECT_EQ(0U, Rounds([this] { EXPECT_EQ(-1, m_Scheduler->DeleteTask(L"T1")); }));
  EXPECT_EQ(BaseSDK::ResultFromErrno(ENOENT), LastError());
  EXPECT_TRUE(Knows(L"T1"));
}

TEST_F(InterfaceTest, DeleteTaskOfATaskOnDiskAloneStillWakesTheMonitor) {
  Store("T1", Later());
  EXPECT_EQ(1U, Rounds([this] { EXPECT_EQ(1, m_Scheduler->DeleteTask(L"T1")); }));
}

TEST_F(InterfaceTest, GetTaskXmlReadsTheFile) {
  Store("T1", Later());
  AString document;
  EXPECT_EQ(1, m_Scheduler->GetTaskXML(L"T1", document));
  EXPECT_EQ(AString::FromUtf8(Later()), document);
  EXPECT_EQ(0U, LastError());
  EXPECT_EQ(-1, m_Scheduler->GetTaskXML(L"T2", document));
  EXPECT_EQ(BaseSDK::ResultFromErrno(ENOENT), LastError());
  EXPECT_EQ(-1, m_Scheduler->GetTaskXML(L"", document));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, LastError());
}

TEST_F(InterfaceTest, EnumeratesTheFilesAndNotTheMemory) {
  EXPECT_EQ(1, Add(L"T1", Later()));
  std::filesystem::remove(m_Directory / "T1.vsk");
  Store("T2", Later());
  unsigned long handle = 0;
  AString id;
  std::multiset<std::string> ids;
  for (long found = m_Scheduler->FindFirstTask(handle, id); found > 0;
       found = m_Scheduler->FindNextTask(handle, id)) {
    ids.insert(id.ToUtf8());
  }
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, LastError());
  ids.erase(".");
  ids.erase("..");
  EXPECT_EQ((std::multiset<std::string>{"T2"}), ids);
  (void)m_Scheduler->FindClose(handle);
  EXPECT_EQ(CTaskStorage::ERR_NO_MORE_TASKS, LastError()) << "FindClose leaves it alone";
}

TEST_F(InterfaceTest, EnumerationFailuresArePassedOn) {
  unsigned long handle = 5;
  AString id;
  EXPECT_EQ(-1, m_Scheduler->FindFirstTask(handle, id));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, LastError());
  EXPECT_EQ(0, m_Scheduler->FindNextTask(0, id));
  EXPECT_EQ(CTaskStorage::ERR_INVALID_ARGUMENT, LastError());
}

TEST_F(InterfaceTest, RefreshTaskListWakesTheMonitorAndLoadsNothing) {
  Store("T1", Later());
  auto& refresh = THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh);
  refresh = false;
  EXPECT_EQ(1U, Rounds([this] { EXPECT_EQ(1, m_Scheduler->RefreshTaskList()); }));
  EXPECT_FALSE(refresh) << "the one change that leaves the flag alone";
  EXPECT_FALSE(Knows(L"T1"));
}

TEST_F(InterfaceTest, ChangesOfTasksRaiseTheRefreshFlag) {
  auto& refresh = THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh);
  const auto raises = [&refresh](auto change) {
    refresh = false;
    EXPECT_EQ(1, change());
    return refresh.load();
  };
  EXPECT_TRUE(raises([this] { return Add(L"T1", Later()); })) << "a new task";
  EXPECT_TRUE(raises([this] { return Add(L"T1", Later()); })) << "a replaced task";
  EXPECT_TRUE(raises([this] { return m_Scheduler->EnableTask(L"T1", false); }));
  EXPECT_TRUE(raises([this] { return m_Scheduler->DeleteTask(L"T1"); }));
}

TEST_F(InterfaceTest, SetRunStateOnPurposeAnswersZeroForDoneAndOneForAnUnknownTask) {
  EXPECT_EQ(1, Add(L"T1", Task(Daily(LaterTrigger), History("2005-02-28 08:00:00 Started"))));
  EXPECT_EQ(0, m_Scheduler->SetRunState(L"T1", L"Failed"));
  EXPECT_EQ("2005-02-28 08:00:00 Failed", StoredRun("T1"));
  EXPECT_TRUE(Traced(L"Try setting run state 'Failed' for task ID = T1"));
  EXPECT_EQ(1, m_Scheduler->SetRunState(L"T2", L"Ok"));
  EXPECT_TRUE(Traced(L"Try setting run state 'Ok' for task ID = T2"));
}

TEST_F(InterfaceTest, SetRunStateOfATaskOnDiskAloneIsUnknown) {
  Store("T1", Later());
  EXPECT_EQ(1, m_Scheduler->SetRunState(L"T1", L"Ok"));
}

TEST_F(InterfaceTest, EnableTaskChangesTheKnownOnesAmongItsIds) {
  EXPECT_EQ(1, Add(L"T2", Later()));
  EXPECT_EQ(1U, Rounds([this] { EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1:T2:T3", false)); }));
  EXPECT_NE(std::string::npos, Stored("T2").find("<Task Enabled=\"0\">"));
  EXPECT_FALSE(m_Directory.Has("T1.vsk"));
  EXPECT_FALSE(m_Directory.Has("T3.vsk"));
}

TEST_F(InterfaceTest, EnableTaskWithoutAKnownIdFailsAndWakesNobody) {
  for (const wchar_t* ids : {L"T1:T2", L"", L":", L"::T1"}) {
    EXPECT_EQ(0U, Rounds([&] { EXPECT_EQ(-1, m_Scheduler->EnableTask(ids, true)); }));
  }
}

TEST_F(InterfaceTest, EnableTaskWithoutAChangeFailsAndWakesNobody) {
  EXPECT_EQ(1, Add(L"T1", Later()));
  EXPECT_EQ(0U, Rounds([this] { EXPECT_EQ(-1, m_Scheduler->EnableTask(L"T1", true)); }));
  EXPECT_EQ(Later(), Stored("T1"));
}

TEST_F(InterfaceTest, EnableTaskOfSeveralSucceedsWithOne) {
  EXPECT_EQ(1, Add(L"T1", Later()));
  EXPECT_EQ(1, Add(L"T2", "<Task Enabled=\"0\"/>"));
  EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1:T2", false));
  EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1:T2", true));
}

TEST_F(InterfaceTest, ADisabledTaskDoesNotRunUntilEnabledAgain) {
  Store("T1", Task(AsSoonAsPossible()));
  Stop();
  m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
  Start();
  EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1", false));
  OpenGate();
  EXPECT_EQ(Batches(), Texts());
  EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1", true));
  Clock().Settle();
  EXPECT_EQ(Batches(), Texts{"T1:0:1:0;"});
}

TEST_F(InterfaceTest, IsCalledFromManyThreadsBesideTheMonitor) {
  constexpr int Rounds = 50;
  const auto work = [this](const wchar_t* taskID) {
    for (int i = 0; i < Rounds; ++i) {
      AString id;
      TaskSchedulerObject_i::AttributeMap attributes;
      EXPECT_EQ(1, m_Scheduler->AddTask(taskID, AString::FromUtf8(Later()), id));
      EXPECT_EQ(0, m_Scheduler->SetRunState(taskID, L"Ok"));
      EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(taskID, attributes, nullptr));
      (void)m_Scheduler->EnableTask(L"T1:T2", i % 2 == 0);
      (void)m_Scheduler->NotifyObject(10, 300, L"");
      unsigned long handle = 0;
      (void)m_Scheduler->FindFirstTask(handle, id);
      (void)m_Scheduler->FindClose(handle);
      EXPECT_EQ(1, m_Scheduler->DeleteTask(taskID));
    }
  };
  std::thread first(work, L"T1");
  std::thread second(work, L"T2");
  first.join();
  second.join();
  Clock().Settle();
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_FALSE(Knows(L"T2"));
}

TEST_F(InterfaceTest, RequestsReachTheOperationsThroughTheMessageQueue) {
  using namespace Corvane::AgentInterfacesV3;
  AMsgQueue queue(3);
  ASSERT_EQ(1, m_Scheduler->Open(3));
  AMsgReply reply;
  AMsgIn request("INoxTaskScheduler", "AddTask", reply);
  request.Set("taskId", AString(L"T1")).Set("taskXml", AString::FromUtf8(Later()));
  EXPECT_EQ(1, queue.Send(request));
  ASSERT_FALSE(reply.IsError());
  EXPECT_EQ(1, reply.Result());
  EXPECT_TRUE(Knows(L"T1"));
  AMsgReply unknown;
  EXPECT_EQ(-1, queue.Send(AMsgIn("INoxTaskScheduler", "Explode", unknown)));
  EXPECT_TRUE(unknown.IsError());
  queue.Close();
}

}  // namespace
