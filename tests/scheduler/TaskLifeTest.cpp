// What the scheduler does with the tasks in memory: when it makes, tests, runs, drops and destroys
// them. The tasks are scripted.
#include "model/Task.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/scheduler/ScriptedTask.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;

class TaskLifeTest : public SchedulerFixture {
 protected:
  explicit TaskLifeTest(const char* zone = "UTC0") : SchedulerFixture(zone) {
    ScriptedTask::Reset();
  }

  static ScriptedTask::Answer& Answer(const char* taskID) {
    return ScriptedTask::s_Answers[taskID];
  }
  static Texts& Journal() { return ScriptedTask::s_Journal; }
  static bool Happened(const char* entry) {
    return std::find(Journal().begin(), Journal().end(), entry) != Journal().end();
  }

  void StoreTasks(const std::vector<const char*>& taskIDs) {
    for (const char* taskID : taskIDs) {
      Store(taskID, Handler);
    }
  }
  /// As it is left when memory runs out.
  void InsertEmptyEntry(const wchar_t* taskID) {
    TaskMap::Map made;
    made[taskID] = nullptr;
    SCHEDULER_INSIDE(*m_Scheduler, m_Tasks).Insert(made.extract(made.begin()));
  }
  /// One evaluation more.
  void Round() {
    EXPECT_EQ(1, m_Scheduler->RefreshTaskList());
    Clock().Settle();
  }
};

TEST_F(TaskLifeTest, TasksAreTestedInTheOrderOfTheirIds) {
  StoreTasks({"b", "a", "B", "10", "9"});
  StartWithOpenGate();
  std::vector<std::string> tested;
  for (const std::string& entry : Journal()) {
    if (entry.starts_with("tested")) {
      tested.push_back(entry.substr(7, entry.find(' ', 7) - 7));
    }
  }
  EXPECT_EQ(tested, (Texts{"10", "9", "B", "a", "b"}));
}

TEST_F(TaskLifeTest, TheSleepIsHandedFromTaskToTask) {
  StoreTasks({"a", "b", "c"});
  Answer("a").m_SleepSeconds = 500;
  Answer("b").m_SleepSeconds = 900;
  Start();
  Journal().clear();
  OpenGate();
  EXPECT_EQ(Journal(), (Texts{"tested a 57600", "tested b 500", "tested c 500"}))
      << "57600 seconds from 08:00 to midnight";
  EXPECT_EQ("500", Sleeps().back());
}

class TaskLifeInNewYorkTest : public TaskLifeTest {
 protected:
  TaskLifeInNewYorkTest() : TaskLifeTest("EST5EDT,M3.2.0,M11.1.0") {}
};

// Before a change the next midnight is an hour too late in spring, and too early in autumn. The end
// of the cycle comes long before either.
TEST_F(TaskLifeInNewYorkTest, MidnightIsTakenWithTheDaylightSavingOfNowOnPurpose) {
  struct Row {
    const char* m_Day;
    long m_Now;
    const char* m_Entry;
  };
  const Row rows[] = {{"2024-03-10 01:45 EST", 1710053100, "tested a 80100"},
                      {"2024-03-10 03:45 EDT", 1710056700, "tested a 72900"},
                      {"2024-11-03 00:30 EDT", 1730608200, "tested a 84600"},
                      {"2024-11-03 02:30 EST", 1730619000, "tested a 77400"}};
  StoreTasks({"a"});
  for (const Row& row : rows) {
    ScriptedTask::Reset();
    Clock().Start(row.m_Now);
    m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
    Start();
    Journal().clear();
    OpenGate();
    EXPECT_EQ(Journal(), Texts{row.m_Entry}) << row.m_Day;
    Stop();
  }
}

TEST_F(TaskLifeTest, Notification302IsTheFirstEventAnd300TheSecond) {
  StoreTasks({"a"});
  StartWithOpenGate();
  Journal().clear();
  Notify(10, 302);
  Notify(10, 300);
  EXPECT_EQ(Journal(), (Texts{"tested a 302 57600", "tested a 300 57600"}));
}

TEST_F(TaskLifeTest, EveryTaskOfAPassSeesTheEventsAndTheNextPassDoesNot) {
  StoreTasks({"a", "b"});
  StartWithOpenGate();
  Journal().clear();
  Notify(10, 302);
  Round();
  EXPECT_EQ(Journal(), (Texts{"tested a 302 57600", "tested b 302 57600", "tested a 57600",
                              "tested b 57600"}));
}

TEST_F(TaskLifeTest, EventsAreKeptWhileTheGateIsClosed) {
  StoreTasks({"a"});
  Start();
  Notify(10, 302);
  Notify(10, 300);
  EXPECT_FALSE(Happened("tested a 57600"));
  Journal().clear();
  OpenGate();
  EXPECT_EQ(Journal(), Texts{"tested a 302 300 57600"});
}

TEST_F(TaskLifeTest, AnEventIsConsumedWithoutAnyTask) {
  StartWithOpenGate();
  Notify(10, 302);
  Notify(10, 300);
  EXPECT_FALSE(SCHEDULER_INSIDE(*m_Scheduler, m_Notification302));
  EXPECT_FALSE(SCHEDULER_INSIDE(*m_Scheduler, m_Notification300));
}

TEST_F(TaskLifeTest, ADueTaskIsRegisteredBeforeTheNextTaskIsTestedAndRunsAfterThePass) {
  StoreTasks({"a", "b"});
  Answer("a").m_Due = true;
  Answer("b").m_Due = true;
  Start();
  Journal().clear();
  m_Handler.Observe([](const TestSupport::FakeHandler::Call&) { Journal().push_back("called"); });
  OpenGate();
  EXPECT_EQ(Journal(), (Texts{"tested a 57600", "registered a", "tested b 57600", "registered b",
                              "called", "state a Ok", "state b Ok"}));
}

TEST_F(TaskLifeTest, TheFlagsOfADueTaskStandInItsBatchEntry) {
  struct Row {
    bool m_Late;
    bool m_NeverRun;
    bool m_KillAtEnd;
    const char* m_Entry;
  };
  const Row rows[] = {{false, false, false, "a:0:0:0;"},
                      {true, false, false, "a:1:0:0;"},
                      {false, true, false, "a:0:1:0;"},
                      {false, false, true, "a:0:0:1;"},
                      {true, true, true, "a:1:1:1;"}};
  StoreTasks({"a"});
  StartWithOpenGate();
  for (const Row& row : rows) {
    Answer("a").m_Due = true;
    Answer("a").m_Late = row.m_Late;
    Answer("a").m_NeverRun = row.m_NeverRun;
    Answer("a").m_KillAtEnd = row.m_KillAtEnd;
    Round();
    EXPECT_EQ(row.m_Entry, Batches().back());
  }
}

TEST_F(TaskLifeTest, ATaskIsDeletedOnlyWhenExpiredAndToBeDeleted) {
  StoreTasks({"both", "expired", "neither", "undead"});
  Answer("both").m_AllExpired = Answer("both").m_DeleteTask = true;
  Answer("expired").m_AllExpired = true;
  Answer("undead").m_DeleteTask = true;
  StartWithOpenGate();
  EXPECT_FALSE(m_Directory.Has("both.vsk"));
  EXPECT_FALSE(Knows(L"both"));
  EXPECT_TRUE(Logged(ALogger::Trace, L"Task ID = both is expired, deleting it."));
  EXPECT_EQ(1U, m_Log.CountContaining(L" is expired, deleting it."));
  EXPECT_EQ(1U, m_Host.CountNotifications(101, L"both"));
  for (const wchar_t* kept : {L"expired", L"neither", L"undead"}) {
    EXPECT_TRUE(Knows(kept)) << AString(kept).ToUtf8();
  }
  EXPECT_EQ(3U, m_Directory.Names().size());
}

TEST_F(TaskLifeTest, ExpiredTasksAreDeletedAfterThePassInTheirOrder) {
  StoreTasks({"a", "b", "c"});
  for (const char* taskID : {"a", "c"}) {
    Answer(taskID).m_AllExpired = Answer(taskID).m_DeleteTask = true;
  }
  Start();
  Journal().clear();
  m_Host.Observe([](const TestSupport::FakeHost::Notification& notification) {
    Journal().push_back("deleted " + notification.m_Text.ToUtf8());
  });
  OpenGate();
  EXPECT_EQ(Journal(), (Texts{"tested a 57600", "tested b 57600", "tested c 57600", "deleted a",
                              "deleted c"}));
}

TEST_F(TaskLifeTest, ATaskThatIsDueAndExpiredAtOnceRunsIsDeletedAndStillGetsItsRunState) {
  StoreTasks({"a"});
  Answer("a").m_Due = Answer("a").m_AllExpired = Answer("a").m_DeleteTask = true;
  StartWithOpenGate();
  EXPECT_EQ(Batches(), Texts{"a:0:0:0;"});
  EXPECT_TRUE(Happened("registered a"));
  EXPECT_FALSE(m_Directory.Has("a.vsk"));
  EXPECT_FALSE(Knows(L"a"));
  EXPECT_TRUE(Logged(ALogger::Trace, L"Try setting run state 'Ok' for task ID = a"));
  EXPECT_FALSE(Happened("state a Ok")) << "the task is no longer there to take it";
}

TEST_F(TaskLifeTest, AnExpiredTaskIsDestroyedWithTheOthersWhenTheCycleIsPurged) {
  StoreTasks({"a", "b"});
  Answer("a").m_AllExpired = Answer("a").m_DeleteTask = true;
  StartWithOpenGate();
  EXPECT_FALSE(Knows(L"a"));
  EXPECT_FALSE(Happened("destroyed a"));
  Stop();
  EXPECT_TRUE(Happened("destroyed a"));
  EXPECT_TRUE(Happened("destroyed b"));
}

TEST_F(TaskLifeTest, AnExpiredTaskLeavesTheMapAlsoWhenItsFileCannotBeDeleted) {
  StoreTasks({"a"});
  Answer("a").m_AllExpired = Answer("a").m_DeleteTask = true;
  Start();
  std::filesystem::remove(m_Directory / "a.vsk");
  OpenGate();
  EXPECT_FALSE(Knows(L"a"));
  EXPECT_TRUE(m_Host.Notifications().empty());
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts());
  EXPECT_EQ(m_Log.Messages(ALogger::Error), Texts());
}

TEST_F(TaskLifeTest, AnEntryThatIsOverwrittenAtTheLoadIsDestroyedWithTheCycleAndNotBefore) {
  StoreTasks({"a"});
  m_Directory.Write("a.vsk.bak", "its entry names the task a, too");
  Start();
  EXPECT_TRUE(Happened("made a#2"));
  EXPECT_FALSE(Happened("destroyed a"));
  EXPECT_FALSE(Happened("destroyed a#2"));
  Stop();
  EXPECT_TRUE(Happened("destroyed a"));
  EXPECT_TRUE(Happened("destroyed a#2"));
}

TEST_F(TaskLifeTest, EveryTaskThatWasMadeIsDestroyedOnce) {
  StoreTasks({"a", "b", "c"});
  m_Directory.Write("a.vsk.bak", "x");
  Answer("b").m_AllExpired = Answer("b").m_DeleteTask = true;
  StartWithOpenGate();
  RunUntil(Begin + 3 * Hour + 1);
  AString id;
  EXPECT_EQ(1, m_Scheduler->AddTask(L"c", L"new", id));
  EXPECT_EQ(1, m_Scheduler->AddTask(L"d", L"new", id));
  EXPECT_EQ(1, m_Scheduler->DeleteTask(L"a"));
  Stop();
  const auto count = [](const std::string& head) {
    return std::count_if(Journal().begin(), Journal().end(),
                         [&](const std::string& entry) { return entry.starts_with(head); });
  };
  EXPECT_GT(count("made "), 10);
  EXPECT_EQ(count("made "), count("destroyed "));
}

TEST_F(TaskLifeTest, AReloadMakesEveryTaskAnew) {
  StoreTasks({"a"});
  StartWithOpenGate();
  RunUntil(Begin + Hour);
  EXPECT_TRUE(Happened("destroyed a"));
  EXPECT_TRUE(Happened("made a#2"));
  EXPECT_FALSE(Happened("made a#3"));
}

TEST_F(TaskLifeTest, ATaskThatThereIsNoMemoryForAtTheLoadIsReportedAndStays) {
  StoreTasks({"a", "b"});
  StartWithOpenGate();
  ScriptedTask::s_NoMemory = true;
  RunUntil(Begin + Hour);
  EXPECT_EQ(m_Log.Messages(ALogger::Information),
            (Texts{"Unexpected empty task 'a', total tasks - 2",
                   "Unexpected empty task 'b', total tasks - 2"}));
  EXPECT_TRUE(Knows(L"a")) << "an entry without task is listed like any other";
  m_Log.Clear();
  Round();
  EXPECT_EQ(2U, m_Log.CountContaining(L"Unexpected empty task"));
  Stop();
  EXPECT_TRUE(Logged(ALogger::Trace, L"Deleting all (2) task from the tasks list..."));
}

TEST_F(TaskLifeTest, AnEmptyEntryDoesNotKeepTheOthersFromRunning) {
  StoreTasks({"a"});
  Answer("a").m_Due = true;
  Start();
  InsertEmptyEntry(L"0");
  OpenGate();
  EXPECT_TRUE(Logged(ALogger::Information, L"Unexpected empty task '0', total tasks - 2"));
  EXPECT_EQ(Batches(), Texts{"a:0:0:0;"});
}

TEST_F(TaskLifeTest, AnEmptyEntryIsAnUnknownTaskToTheInterface) {
  Start();
  InsertEmptyEntry(L"a");
  TaskSchedulerObject_i::AttributeMap attributes;
  EXPECT_EQ(1, m_Scheduler->SetRunState(L"a", L"Ok"));
  EXPECT_EQ(-1, m_Scheduler->EnableTask(L"a", false));
  EXPECT_EQ(-1, m_Scheduler->GetTaskAttributes(L"a", attributes, nullptr));
  EXPECT_TRUE(attributes.empty());
}

TEST_F(TaskLifeTest, AReplacedTaskIsDestroyedBeforeTheNewOneIsMade) {
  StoreTasks({"a"});
  StartWithOpenGate();
  Journal().clear();
  AString id;
  EXPECT_EQ(1, m_Scheduler->AddTask(L"a", L"new", id));
  Clock().Settle();
  EXPECT_EQ(Journal(), (Texts{"destroyed a", "made a#2", "tested a#2 57600"}))
      << "the monitor sees only the new one";
}

TEST_F(TaskLifeTest, ANewTaskThatThereIsNoMemoryForIsAbsentAndTheMonitorIsWokenAllTheSame) {
  StoreTasks({"a"});
  StartWithOpenGate();
  Journal().clear();
  const unsigned before = Iterations();
  ScriptedTask::s_NoMemory = true;
  AString id;
  EXPECT_EQ(1, m_Scheduler->AddTask(L"a", L"new", id));
  Clock().Settle();
  EXPECT_EQ(Journal(), Texts{"destroyed a"});
  EXPECT_FALSE(Knows(L"a"));
  EXPECT_EQ(m_Log.Messages(ALogger::Information),
            Texts{"Failed to allocate memory for new task ID = a."});
  EXPECT_EQ(before + 1, Iterations());
}

TEST_F(TaskLifeTest, ADeletedTaskIsDestroyedAtOnce) {
  StoreTasks({"a"});
  StartWithOpenGate();
  Journal().clear();
  EXPECT_EQ(1, m_Scheduler->DeleteTask(L"a"));
  Clock().Settle();
  EXPECT_EQ(Journal(), Texts{"destroyed a"});
}

TEST_F(TaskLifeTest, EnableAnswersOneWhenAnyTaskAcceptsAndWakesTheMonitorThen) {
  struct Row {
    long m_EnableResult;
    long m_Result;
    unsigned m_Rounds;
  };
  StoreTasks({"a"});
  StartWithOpenGate();
  for (const Row& row : {Row{1, 1, 1}, Row{0, 1, 1}, Row{-1, -1, 0}}) {
    Answer("a").m_EnableResult = row.m_EnableResult;
    const unsigned before = Iterations();
    EXPECT_EQ(row.m_Result, m_Scheduler->EnableTask(L"a", true)) << row.m_EnableResult;
    Clock().Settle();
    EXPECT_EQ(before + row.m_Rounds, Iterations()) << row.m_EnableResult;
  }
}

TEST_F(TaskLifeTest, AttributesRefreshTheClosestRunOnce) {
  StoreTasks({"a"});
  Start();
  Journal().clear();
  TaskSchedulerObject_i::AttributeMap attributes;
  EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"a", attributes, nullptr));
  EXPECT_EQ(Journal(), Texts{"updated a"});
}

}  // namespace
