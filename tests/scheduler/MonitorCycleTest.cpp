// The monitor's cycles in virtual time: how long it sleeps, when it loads, how it stops.
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/sdk/base/FailingFileSystem.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::FakeHandler;

class MonitorCycleTest : public SchedulerFixture {
 protected:
  using SchedulerFixture::SchedulerFixture;
};

// The sleep

TEST_F(MonitorCycleTest, SleepsUntilTheNextRun) {
  Store("T1", Task(Daily("2005-03-01 08:20:00")));
  Store("T2", Task(Daily("2005-03-01 08:10:00")));
  StartWithOpenGate();
  EXPECT_EQ("600", Sleeps().back());
  EXPECT_EQ(Begin + 600, Clock().NextDeadline());
}

TEST_F(MonitorCycleTest, SleepsUntilTheCycleEndsWithoutAnyTask) {
  StartWithOpenGate();
  EXPECT_EQ("3600", Sleeps().back());
}

TEST_F(MonitorCycleTest, SleepsUntilLocalMidnight) {
  Clock().Start(Begin + 15 * Hour + 30 * Minute);
  StartWithOpenGate();
  EXPECT_EQ("1800", Sleeps().back()) << "from 23:30";
  RunUntil(Begin + 16 * Hour);
  EXPECT_EQ("1800", Sleeps().back()) << "the other half of the cycle";
  EXPECT_EQ(1U, Loads());
}

TEST_F(MonitorCycleTest, ADueTaskShortensNoSleepBelowTheNextStart) {
  Store("T1", Task(AsSoonAsPossible()));
  StartWithOpenGate();
  EXPECT_EQ("3600", Sleeps().back());
}

TEST_F(MonitorCycleTest, AHandlerThatTakesLongerThanTheCycleMakesTheSleepZeroAndReloads) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  m_Handler.Observe([](const FakeHandler::Call&) { Clock().Sleep(3601 * 1000); });
  OpenGate();
  EXPECT_EQ(1U, Sleeps().size()) << "the monitor is with the handler";
  RunUntil(Begin + 3602);  // a wait of no length takes a millisecond of virtual time
  EXPECT_EQ("0", Sleeps()[1]);
  EXPECT_EQ(2U, Loads());
}

TEST_F(MonitorCycleTest, TheEndOf32BitTimeHasNoMidnightAndTheCycleBoundsTheSleep) {
  Clock().Start(2147483647 - 2 * Hour);
  StartWithOpenGate();
  EXPECT_EQ("3600", Sleeps().back());
  RunUntil(2147483647 - 30 * Minute);
  EXPECT_EQ("3600", Sleeps().back()) << "to the last second there is";
}

TEST_F(MonitorCycleTest, ARefreshRequestWithoutTheWakeEventChangesNothing) {
  StartWithOpenGate();
  const unsigned before = Iterations();
  THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh) = true;
  RunUntil(Begin + Hour - 1);
  EXPECT_EQ(before, Iterations());
  EXPECT_EQ(1U, Loads());
}

TEST_F(MonitorCycleTest, TheRefreshFlagIsLoweredAtTheNextLoadAndNotBefore) {
  StartWithOpenGate();
  auto& refresh = THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh);
  Notify(2);
  RunUntil(Begin + Hour - 1);
  EXPECT_TRUE(refresh);
  RunUntil(Begin + Hour);
  EXPECT_FALSE(refresh);
}

// The cycle

TEST_F(MonitorCycleTest, LoadsTheTasksAnewAfterAnHour) {
  StartWithOpenGate();
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  RunUntil(Begin + Hour - 1);
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ(1U, Loads());
  RunUntil(Begin + Hour);
  EXPECT_TRUE(Knows(L"T1"));
  EXPECT_EQ(2U, Loads());
}

TEST_F(MonitorCycleTest, BeingRousedNeverLoads) {
  StartWithOpenGate();
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  Notify(2);
  Notify(10, 300);
  EXPECT_EQ(1, m_Scheduler->RefreshTaskList());
  Clock().Settle();
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ(1U, Loads());
}

TEST_F(MonitorCycleTest, AClockSetBackBeforeTheCycleLoadsAnew) {
  StartWithOpenGate();
  RunUntil(Begin + 10 * Minute);
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  Clock().StepWallClock(-5 * Minute);
  Clock().Settle();
  EXPECT_EQ(1U, Loads()) << "still after its beginning";
  Clock().StepWallClock(-6 * Minute);
  Clock().Settle();
  EXPECT_EQ(2U, Loads());
  EXPECT_TRUE(Knows(L"T1"));
}

TEST_F(MonitorCycleTest, AClockSetBackToTheBeginningOfTheCycleDoesNotLoadAndASecondBeforeDoes) {
  StartWithOpenGate();
  RunUntil(Begin + 10 * Minute);
  Clock().StepWallClock(-10 * Minute);
  Clock().Settle();
  EXPECT_EQ(1U, Loads());
  Clock().StepWallClock(-1);
  Clock().Settle();
  EXPECT_EQ(2U, Loads());
}

TEST_F(MonitorCycleTest, AClockSetForwardRunsWhatIsDueThen) {
  Store("T1", Task(Daily("2005-03-01 09:30:00")));
  StartWithOpenGate();
  Clock().StepWallClock(2 * Hour);
  Clock().Settle();
  EXPECT_EQ(CallTimes(), Moments{Begin + 2 * Hour});
  EXPECT_EQ(2U, Loads()) << "the cycle is over, too";
}

TEST_F(MonitorCycleTest, WakesWithTheMachine) {
  Store("T1", Task(Daily("2005-03-01 09:30:00")));
  StartWithOpenGate();
  Clock().Suspend(8 * Hour);
  Clock().Settle();
  EXPECT_EQ(CallTimes(), Moments{Begin + 8 * Hour});
}

TEST_F(MonitorCycleTest, WithoutTasksItGoesRoundAllTheSame) {
  StartWithOpenGate();
  RunUntil(Begin + 24 * Hour);
  EXPECT_EQ(25U, Loads());
  EXPECT_EQ(m_Log.Messages(ALogger::Error), Texts());
}

TEST_F(MonitorCycleTest, WithoutADirectoryItGoesRoundAllTheSame) {
  Configure("task_storage_path", (m_Directory / "missing").string());
  StartWithOpenGate();
  RunUntil(Begin + 2 * Hour);
  EXPECT_EQ(3U, Loads());
}

TEST_F(MonitorCycleTest, ADocumentThatCannotBeReadIsSkippedWithoutAWord) {
  std::filesystem::create_directory(m_Directory / "T1.vsk");
  Store("T2", Task(Daily("2030-01-01 08:00:00")));
  Start();
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_TRUE(Knows(L"T2"));
  EXPECT_EQ(m_Log.Lines().size(), m_Log.Messages(ALogger::Trace).size());
}

TEST_F(MonitorCycleTest, ClosesTheDirectoryAfterEveryLoadAlsoOfNothing) {
  BaseSDK::FailingFileSystem files;
  Start();
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  RunUntil(Begin + Hour);
  EXPECT_EQ(2U, Loads());
  EXPECT_EQ(2, std::count(files.Calls().begin(), files.Calls().end(), "closedir"));
  EXPECT_EQ(0U, files.OpenDescriptors());
  Stop();
}

TEST_F(MonitorCycleTest, EntriesThatAreNoTasksAreSkipped) {
  m_Directory.Write("notes.txt", "x");
  m_Directory.Write(".T1.a1B2c3", "x");
  Start();
  EXPECT_EQ(AString(L"Currently running tasks:\n\n\nTask processing is disabled.\n"), Report());
}

TEST_F(MonitorCycleTest, TellsTheStepsOfItsCycles) {
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  Start();
  RunUntil(Begin + Hour);
  EXPECT_EQ(Traces(), (Texts{"TaskSchedulerObject_i::Initialize()\n", "REFRESH TASK LIST!\n",
                             "Task Thread is sleeping for 3600 seconds.",
                             "Deleting all (1) task from the tasks list...", "REFRESH TASK LIST!\n",
                             "Task Thread is sleeping for 3600 seconds."}));
  for (const TestSupport::LogCapture::Line& line : m_Log.Lines()) {
    EXPECT_EQ("Corvane::Agent::TaskScheduler", line.m_Channel);
    EXPECT_EQ("TaskSchedulerObject", line.m_Source);
  }
}

TEST_F(MonitorCycleTest, PurgesItsTasksAndEndsWhenStopped) {
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  Store("T2", Task(Daily("2030-01-01 08:00:00")));
  Start();
  m_Log.Clear();
  Stop();
  EXPECT_EQ(Traces(),
            (Texts{"TaskSchedulerObject_i::Uninitialize()\n",
                   "Deleting all (2) task from the tasks list...", "Exiting the Task Thread.\n"}));
  EXPECT_FALSE(Knows(L"T1"));
}

TEST_F(MonitorCycleTest, AStopDuringADispatchTakesEffectAfterThatIterationsWait) {
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(AsSoonAsPossible(), "", OtherHandler));
  FakeHandler other;
  m_Host.AddHandler(OtherHandler, other);
  Start();
  m_Handler.Observe([](const FakeHandler::Call&) { Clock().Sleep(500); });
  OpenGate();
  Stop();
  EXPECT_EQ(1U, other.Calls().size()) << "the handlers of the pass are all called";
  EXPECT_EQ("2005-03-01 08:00:00 Ok", StoredRun("T1"));
  EXPECT_EQ("Exiting the Task Thread.\n", Traces().back());
}

TEST_F(MonitorCycleTest, AStopDuringTheLoadTakesEffectAfterTheFirstIteration) {
  Store("T1", Task(AsSoonAsPossible()));
  THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Stop) = true;
  OpenGate();
  Start();
  EXPECT_EQ(Batches(), Texts{"T1:0:1:0;"});
  EXPECT_EQ(1U, Sleeps().size());
  EXPECT_EQ("Exiting the Task Thread.\n", Traces().back());
}

// The zone

TEST_F(MonitorCycleTest, AChangedZoneCountsFromTheNextPassOn) {
  Clock().Start(Begin + 15 * Hour + 10 * Minute);  // 23:10
  Start();
  const VirtualTime::Zone later("<+0030>-0:30");
  EXPECT_EQ(1, m_Scheduler->RefreshTaskList());
  Clock().Settle();
  EXPECT_EQ(Sleeps(), (Texts{"3000", "1200"})) << "to midnight at 24:00, at 23:30";
}

// Days that are not 24 hours long

class MonitorInNewYorkTest : public MonitorCycleTest {
 protected:
  MonitorInNewYorkTest() : MonitorCycleTest("EST5EDT,M3.2.0,M11.1.0") {}
};

TEST_F(MonitorInNewYorkTest, MidnightIsLocalOnTheDaysOfAChange) {
  struct Row {
    const char* m_Day;
    long m_Now;
    const char* m_Sleep;
  };
  const Row rows[] = {
      {"2024-03-10 23:30 EDT", 1710127800, "1800"},
      {"2024-11-03 23:30 EST", 1730694600, "1800"},
      {"2024-07-01 23:30 EDT", 1719891000, "1800"},
  };
  for (const Row& row : rows) {
    Clock().Start(row.m_Now);
    m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
    Start();
    EXPECT_EQ(row.m_Sleep, Sleeps().back()) << row.m_Day;
    Stop();
  }
}

TEST_F(MonitorInNewYorkTest, ADailyTaskKeepsItsLocalTimeAcrossTheChange) {
  Clock().Start(1709989200);  // 2024-03-09 08:00 EST
  Store("T1", Task(Daily("2024-03-09 09:00:00")));
  StartWithOpenGate();
  RunUntil(1709989200 + 48 * Hour);
  EXPECT_EQ(CallTimes(),
            (Moments{1709989200 + Hour, 1709989200 + 24 * Hour, 1709989200 + 48 * Hour}));
}

// A day that the zone leaves out

struct MissingDay {
  const char* m_Zone;
  long m_Midnight;  ///< the end of the day before and the beginning of the day after
  const char* m_Begin;
  const char* m_LastRun;
};

class MonitorOnAMissingDayTest : public MonitorCycleTest,
                                 public ::testing::WithParamInterface<MissingDay> {
 protected:
  MonitorOnAMissingDayTest() : MonitorCycleTest(GetParam().m_Zone) {}
};

TEST_P(MonitorOnAMissingDayTest, SleepsUntilTheMidnightThatEndsTheDayBefore) {
  const long midnight = GetParam().m_Midnight;
  Clock().Start(midnight - 30 * Minute - 20);
  Store("T1", Task(Daily(GetParam().m_Begin), History(GetParam().m_LastRun)));
  StartWithOpenGate();
  EXPECT_EQ("1820", Sleeps().back());
  RunUntil(midnight + 20 * Minute);
  EXPECT_EQ(Sleeps(), (Texts{"1820", "1820", "600", "1180"}))
      << "once before the gate was open; to midnight, to the start, to the end of the cycle";
  EXPECT_EQ(CallTimes(), Moments{midnight + 10 * Minute}) << "ten past, to the second";
}

INSTANTIATE_TEST_SUITE_P(
    Monitor, MonitorOnAMissingDayTest,
    ::testing::Values(
        MissingDay{"Pacific/Kwajalein", 745934400, "1993-08-01 00:10:00", "1993-08-20 00:10:00 Ok"},
        MissingDay{"Pacific/Apia", 1325239200, "2011-12-01 00:10:00", "2011-12-29 00:10:00 Ok"}),
    [](const auto& row) { return std::string(row.param.m_Zone).substr(8); });

}  // namespace
