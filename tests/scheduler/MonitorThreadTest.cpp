// Whole passes of the monitor in virtual time, with real tasks and files: who runs when.
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/support/ForwardingFileSystem.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <BaseSDK/AGuid.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;
using TestSupport::FakeHandler;

const char Started[] = "2005-03-01 08:00:00 Started";
const char Ok[] = "2005-03-01 08:00:00 Ok";

class MonitorThreadTest : public SchedulerFixture {
 protected:
  Texts Operations() const {
    Texts operations;
    for (const FakeHandler::Call& call : m_Handler.Calls()) {
      operations.push_back(call.m_Operation);
    }
    return operations;
  }
};

// Dispatch

TEST_F(MonitorThreadTest, DueTasksOfOneHandlerAreOneCallInTheOrderOfTheirIds) {
  Store("T2", Task(AsSoonAsPossible()));
  Store("T1", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts{"T1:0:1:0;T2:0:1:0;"});
  EXPECT_EQ(CallTimes(), Moments{Begin});
}

TEST_F(MonitorThreadTest, EveryHandlerGetsItsOwnBatchInTheOrderOfTheClassIdentifiers) {
  FakeHandler other;
  m_Host.AddHandler(OtherHandler, other);
  Store("T1", Task(AsSoonAsPossible(), "", OtherHandler));
  Store("T2", Task(AsSoonAsPossible()));
  Store("T3", Task(AsSoonAsPossible(), "", OtherHandler));
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts{"T2:0:1:0;"});
  EXPECT_EQ(other.Batches(), Texts{"T1:0:1:0;T3:0:1:0;"});
  ASSERT_EQ(2U, m_Host.Openings().size());
  EXPECT_EQ(AString(Handler), m_Host.Openings()[0].m_ClassId);
  EXPECT_EQ(AString(OtherHandler), m_Host.Openings()[1].m_ClassId);
}

TEST_F(MonitorThreadTest, OpensTheHandlerInterfaceAndReleasesItOnce) {
  Store("T1", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  ASSERT_EQ(1U, m_Host.Openings().size());
  EXPECT_EQ(0, m_Host.Openings()[0].m_InterfaceId.Compare(INoxScheduledTaskHandler::GetIID()));
  EXPECT_EQ(0U, m_Host.Openings()[0].m_Flags);
  EXPECT_EQ(1U, m_Handler.Releases());
}

TEST_F(MonitorThreadTest, AHandlerIsReleasedAfterItsRunStatesAndBeforeTheNextIsOpened) {
  FakeHandler other;
  m_Host.AddHandler(OtherHandler, other);
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(AsSoonAsPossible(), "", OtherHandler));
  Start();
  unsigned releasesAtState = 1;
  m_Host.Observe([&](const TestSupport::FakeHost::Notification&) {
    if (StoredRun("T1") == Ok && other.Calls().empty()) {
      releasesAtState = m_Handler.Releases();
    }
  });
  unsigned releasesAtNext = 0;
  other.Observe([&](const FakeHandler::Call&) { releasesAtNext = m_Handler.Releases(); });
  OpenGate();
  EXPECT_EQ(0U, releasesAtState);
  EXPECT_EQ(1U, releasesAtNext);
}

TEST_F(MonitorThreadTest, TheHandlersAnswersDecideWhetherTheRunsAreRecorded) {
  struct Row {
    long m_RunTasksEx;
    long m_RunTasks;
    std::vector<std::string> m_Operations;
    bool m_Accepted;
  };
  const std::vector<std::string> once = {"RunTasksEx"};
  const std::vector<std::string> twice = {"RunTasksEx", "RunTasks"};
  const Row rows[] = {
      {1, 1, once, true},
      {7, 1, once, true},
      {0, -1, twice, true},
      {0, 0, twice, true},
      {0, 1, twice, true},
      {-1, 1, twice, true},
      {-9999, -9999, twice, true},
      {-10001, -10001, twice, true},
      {TASK_HANDLER_DECLINED, 1, once, false},
      {0, TASK_HANDLER_DECLINED, twice, false},
      {-1, TASK_HANDLER_DECLINED, twice, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.m_RunTasksEx) + ", " + std::to_string(row.m_RunTasks));
    Clock().Start(Begin);
    m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
    m_Handler.ClearCalls();
    m_Handler.AnswerAlways(row.m_RunTasksEx, row.m_RunTasks);
    Store("T1", Task(AsSoonAsPossible()));
    Store("T2", Task(AsSoonAsPossible()));
    StartWithOpenGate();
    EXPECT_EQ(row.m_Operations, Operations());
    for (const std::string& batch : Batches()) {
      EXPECT_EQ("T1:0:1:0;T2:0:1:0;", batch);
    }
    EXPECT_EQ(row.m_Accepted ? Ok : Started, StoredRun("T1"));
    EXPECT_EQ(row.m_Accepted ? Ok : Started, StoredRun("T2"));
    Stop();
  }
  EXPECT_EQ(m_Host.Openings().size(), m_Handler.Releases());
}

TEST_F(MonitorThreadTest, ADeclinedRunStaysRegisteredAndIsNotRunAgainInItsCycle) {
  m_Handler.AnswerAlways(TASK_HANDLER_DECLINED, TASK_HANDLER_DECLINED);
  Store("T1", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  m_Log.Clear();
  OpenGate();
  EXPECT_EQ(1U, m_Handler.Calls().size());
  EXPECT_EQ(m_Log.Messages(ALogger::Information), Texts());
  RunUntil(Begin + Hour);
  EXPECT_EQ(2U, m_Handler.Calls().size()) << "the reload takes the run for unfinished";
}

TEST_F(MonitorThreadTest, AHandlerThatDoesNotOpenDropsItsBatchAndNoOther) {
  Store("T1", Task(AsSoonAsPossible(), "", "{unknown}"));
  Store("T2", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  EXPECT_TRUE(Logged(ALogger::Information, L"Failed to open task handler ID = {unknown}"));
  EXPECT_EQ(Started, StoredRun("T1")) << "registered, without a run state";
  EXPECT_EQ(Ok, StoredRun("T2"));
  EXPECT_EQ(1U, m_Handler.Releases());
}

TEST_F(MonitorThreadTest, AHandlerThatOpensWithoutAnObjectHasNotOpened) {
  m_Host.AddNothing(OtherHandler);
  Store("T1", Task(AsSoonAsPossible(), "", OtherHandler));
  StartWithOpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Information),
            (Texts{"Task ID = T1 was RUN on 2005-03-01 08:00:00",
                   std::string("Failed to open task handler ID = ") + OtherHandler}));
  EXPECT_EQ(Started, StoredRun("T1"));
}

TEST_F(MonitorThreadTest, ATaskWithoutHandlerIsOfferedToNobody) {
  Store("T1", "<Task>" + AsSoonAsPossible() + "</Task>");
  StartWithOpenGate();
  EXPECT_TRUE(Logged(ALogger::Information, L"Failed to open task handler ID = "));
  EXPECT_EQ(Started, StoredRun("T1"));
}

TEST_F(MonitorThreadTest, AnIdThatTheEncodingChangesOnPurposeReachesSetRunStateEncoded) {
  Store("my task", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts{"my%20task:0:1:0;"});
  EXPECT_TRUE(Logged(ALogger::Trace, L"Try setting run state 'Ok' for task ID = my%20task"));
  EXPECT_EQ(Started, StoredRun("my task")) << "no task goes by that name";
}

TEST_F(MonitorThreadTest, AnIdWithTheMarksOfABatchIsOneEntry) {
  Store("a:b;c%1", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts{"a%3Ab%3Bc%251:0:1:0;"});
}

TEST_F(MonitorThreadTest, AHandlerMayCallTheSchedulerFromWithin) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  TaskSchedulerObject_i::AttributeMap attributes;
  m_Handler.Observe([&](const FakeHandler::Call&) {
    EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, nullptr));
    EXPECT_EQ(0, m_Scheduler->SetRunState(L"T1", L"Running"));
    EXPECT_EQ(1, m_Scheduler->DeleteTask(L"T1"));
  });
  OpenGate();
  EXPECT_EQ(AString(L"1109664000"), attributes[L"t3"]) << "registered before the call";
  EXPECT_FALSE(Knows(L"T1"));
}

TEST_F(MonitorThreadTest, TheRunIsOnDiskBeforeTheHandlerIsCalled) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  std::string seen;
  m_Handler.Observe([&](const FakeHandler::Call&) { seen = StoredRun("T1"); });
  OpenGate();
  EXPECT_EQ(Started, seen);
  EXPECT_EQ(Ok, StoredRun("T1"));
  EXPECT_EQ(2U, m_Host.CountNotifications(100, L"T1"));
}

// Exceptions from outside

TEST_F(MonitorThreadTest, AHandlerThatThrowsDropsItsBatchAndNoOtherAndIsReleased) {
  FakeHandler other;
  m_Host.AddHandler(OtherHandler, other);
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(AsSoonAsPossible(), "", OtherHandler));
  Start();
  m_Handler.Observe([](const FakeHandler::Call&) { throw std::runtime_error("gone"); });
  OpenGate();
  EXPECT_EQ(Operations(), Texts{"RunTasksEx"}) << "it may have taken the batch";
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{std::string("Task handler ID = ") + Handler + " failed: gone"});
  EXPECT_EQ(Started, StoredRun("T1"));
  EXPECT_EQ(Ok, StoredRun("T2"));
  EXPECT_EQ(1U, m_Handler.Releases());
  m_Handler.Observe({});
  RunUntil(Begin + Hour);
  EXPECT_EQ("2005-03-01 09:00:00 Ok", StoredRun("T1")) << "an unfinished run runs again";
}

TEST_F(MonitorThreadTest, WhatIsThrownNeedNotBeAStandardException) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  m_Handler.Observe([](const FakeHandler::Call&) { throw 1; });
  OpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{std::string("Task handler ID = ") + Handler + " failed: unknown exception"});
}

TEST_F(MonitorThreadTest, ANotificationThatThrowsKeepsNothingFromRunning) {
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(Ended()));
  Start();
  m_Host.Observe([](const TestSupport::FakeHost::Notification&) { throw std::bad_alloc(); });
  OpenGate();
  EXPECT_EQ(Ok, StoredRun("T1"));
  EXPECT_FALSE(Knows(L"T2"));
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts());
}

/// An agent that fails when a handler is to be opened.
class ThrowingHost : public TestSupport::FakeHost {
 public:
  long OpenObject(const AString& /*classId*/, const BaseSDK::AGuid& /*interfaceId*/,
                  unsigned long /*flags*/, void*& /*object*/) override {
    throw std::runtime_error("no agent");
  }
};

TEST_F(MonitorThreadTest, AnOpeningThatThrowsDropsTheBatch) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  const ThrowingHost host;
  OpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{std::string("Task handler ID = ") + Handler + " failed: no agent"});
  EXPECT_EQ(Started, StoredRun("T1"));
  OpenGate();
  EXPECT_EQ(1U, m_Log.Messages(ALogger::Warning).size()) << "the run stays registered";
  Stop();
}

/// Files that throw where they are told to, as often as they are told to.
class ThrowingFiles : public TestSupport::ForwardingFileSystem {
 public:
  ThrowingFiles() : ForwardingFileSystem(AFileSystem::Current()), m_Before(Replace(this)) {}
  ~ThrowingFiles() override { (void)Replace(m_Before); }

  int Rename(const char* from, const char* to, bool replace) override {
    Throw(m_Renames);
    return ForwardingFileSystem::Rename(from, to, replace);
  }
  int ReadDirectory(unsigned long handle, const char*& name) override {
    Throw(m_ReadDirectories);
    return ForwardingFileSystem::ReadDirectory(handle, name);
  }
  int Unlink(const char* path) override {
    Throw(m_Unlinks);
    return ForwardingFileSystem::Unlink(path);
  }

  unsigned m_Renames = 0;
  unsigned m_ReadDirectories = 0;
  unsigned m_Unlinks = 0;

 private:
  static void Throw(unsigned& times) {
    if (times == 0) {
      return;
    }
    --times;
    throw std::runtime_error("broken");
  }

  AFileSystem* const m_Before;
};

TEST_F(MonitorThreadTest, ADirectoryThatThrowsForEverEndsTheLoadAndNotTheLoop) {
  Store("T1", Task(AsSoonAsPossible()));
  ThrowingFiles files;
  files.m_ReadDirectories = 4000000000U;
  StartWithOpenGate();
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ(1000U, m_Log.Count(ALogger::Warning, L"A stored task could not be loaded: broken"));
  files.m_ReadDirectories = 0;
  RunUntil(Begin + Hour);
  EXPECT_EQ("2005-03-01 09:00:00 Ok", StoredRun("T1"));
  Stop();
}

TEST_F(MonitorThreadTest, ARunThatCannotBeRegisteredMissesItsTurnAndRunsAtTheNext) {
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(AsSoonAsPossible()));
  Start();
  ThrowingFiles files;
  files.m_Renames = 1;
  OpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts{"Task ID = T1 missed its turn: broken"});
  EXPECT_EQ(Batches(), Texts{"T2:0:1:0;"});
  OpenGate();
  EXPECT_EQ(Batches(), (Texts{"T2:0:1:0;", "T1:0:1:0;"}));
  OpenGate();
  EXPECT_EQ(2U, Batches().size());
  Stop();
}

TEST_F(MonitorThreadTest, ABatchOfRunsThatCouldNotBeRegisteredIsHandedToNobody) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  ThrowingFiles files;
  files.m_Renames = 1;
  OpenGate();
  EXPECT_TRUE(m_Host.Openings().empty());
  Stop();
}

TEST_F(MonitorThreadTest, ARunStateThatCannotBeRecordedIsTriedASecondTime) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  ThrowingFiles files;
  m_Handler.Observe([&](const FakeHandler::Call&) { files.m_Renames = 1; });
  OpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{"Run state of task ID = T1 could not be recorded: broken"});
  EXPECT_EQ(Ok, StoredRun("T1"));
  Stop();
}

TEST_F(MonitorThreadTest, AnExpiredTaskWhoseFileCannotBeDeletedIsBackAtTheNextLoad) {
  Store("T1", Task(Ended()));
  Store("T2", Task(Ended()));
  Start();
  ThrowingFiles files;
  files.m_Unlinks = 1;
  OpenGate();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts{"Task ID = T1 could not be deleted: broken"});
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_FALSE(Knows(L"T2"));
  EXPECT_TRUE(m_Directory.Has("T1.vsk"));
  RunUntil(Begin + Hour);
  EXPECT_FALSE(m_Directory.Has("T1.vsk"));
  Stop();
}

// When tasks run

TEST_F(MonitorThreadTest, ADailyTaskRunsAtItsSecondEveryDay) {
  Store("T1", Task(Daily("2005-03-01 09:30:15")));
  StartWithOpenGate();
  RunUntil(Begin + 72 * Hour);
  const long first = Begin + Hour + 30 * Minute + 15;
  EXPECT_EQ(CallTimes(), (Moments{first, first + 24 * Hour, first + 48 * Hour}));
  EXPECT_EQ(Batches(), (Texts{"T1:0:1:0;", "T1:0:0:0;", "T1:0:0:0;"}));
  EXPECT_EQ("2005-03-03 09:30:15 Ok", StoredRun("T1"));
}

TEST_F(MonitorThreadTest, TasksDueAtOneSecondAreOneBatch) {
  Store("T1", Task(Daily("2005-03-01 09:00:00")));
  Store("T2", Task(Daily("2005-03-01 09:00:00")));
  StartWithOpenGate();
  RunUntil(Begin + 2 * Hour);
  EXPECT_EQ(Batches(), Texts{"T1:0:1:0;T2:0:1:0;"});
}

TEST_F(MonitorThreadTest, ATaskAddedLaterRunsAtOnceWhenDue) {
  StartWithOpenGate();
  RunUntil(Begin + 10 * Minute);
  AString id;
  EXPECT_EQ(1, m_Scheduler->AddTask(L"T1", AString::FromUtf8(Task(AsSoonAsPossible())), id));
  Clock().Settle();
  EXPECT_EQ(CallTimes(), Moments{Begin + 10 * Minute});
}

TEST_F(MonitorThreadTest, AnUnfinishedRunIsRunAgainAfterARestart) {
  Store("T1", Task(AsSoonAsPossible(), History("2005-02-28 08:00:00 Started")));
  StartWithOpenGate();
  EXPECT_TRUE(Logged(ALogger::Warning,
                     L"Task 'T1' did not finish last time, the last known state is 'Started'"));
  EXPECT_EQ(Batches(), Texts{"T1:0:1:0;"});
}

TEST_F(MonitorThreadTest, AFinishedRunIsNotRunAgainAfterARestart) {
  Store("T1", Task(AsSoonAsPossible(), History("2005-02-28 08:00:00 Ok")));
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts());
}

TEST_F(MonitorThreadTest, AnExpiredTaskIsDeletedFromDiskAndMemory) {
  Store("T1", Task(Ended()));
  Store("T2", Task(Ended() + AsSoonAsPossible(), History("2005-02-28 08:00:00 Ok")));
  StartWithOpenGate();
  EXPECT_FALSE(m_Directory.Has("T1.vsk"));
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_TRUE(Logged(ALogger::Trace, L"Task ID = T1 is expired, deleting it."));
  EXPECT_EQ(1U, m_Host.CountNotifications(101, L"T1"));
  EXPECT_TRUE(Knows(L"T2")) << "a task that runs as soon as possible is never deleted";
}

TEST_F(MonitorThreadTest, ATaskWithoutTriggersIsDeletedAtItsFirstPass) {
  Store("T1", "<Task/>");
  StartWithOpenGate();
  EXPECT_FALSE(m_Directory.Has("T1.vsk"));
}

// The gate

TEST_F(MonitorThreadTest, WhileTheGateIsClosedNothingIsEvaluated) {
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(Ended()));
  Start();
  RunUntil(Begin + 5 * Hour);
  EXPECT_EQ(Batches(), Texts());
  EXPECT_TRUE(m_Directory.Has("T2.vsk"));
  EXPECT_EQ(6U, Loads()) << "the tasks are loaded all the same";
}

TEST_F(MonitorThreadTest, WhileTheGateIsClosedItSleepsUntilTheCycleEndsUnlessWoken) {
  Store("T1", Task(Daily("2005-03-01 08:30:00")));
  Start();
  EXPECT_EQ(Sleeps(), Texts{"3600"});
  RunUntil(Begin + 10 * Minute);
  EXPECT_EQ(1, m_Scheduler->RefreshTaskList());
  Clock().Settle();
  EXPECT_EQ(Sleeps(), (Texts{"3600", "3000"}));
}

TEST_F(MonitorThreadTest, AGateThatClosesKeepsDueTasksUntilItOpens) {
  Store("T1", Task(Daily("2005-03-01 09:30:00")));
  StartWithOpenGate();
  Notify(1);
  RunUntil(Begin + 2 * Hour);
  EXPECT_EQ(Batches(), Texts());
  Notify(2);
  EXPECT_EQ(Batches(), Texts{"T1:1:1:0;"}) << "half an hour late";
}

}  // namespace
