// What docs/time.md promises, example by example.
#include "tests/support/LocalTimes.h"
#include "tests/support/scheduler/TestScheduler.h"

#include <gtest/gtest.h>

namespace {

using TestSupport::TaskXml;
using TestSupport::TestScheduler;
using TestSupport::TriggerXml;
using Runs = std::vector<std::string>;

using TestSupport::NewYork;
using TestSupport::Utc;
constexpr long Sunday = 1, Monday = 2;

// A running scheduler with the gate open.
struct Running : TestScheduler {
  Running(const char* zone, const std::string& now) : TestScheduler(zone, now) {
    EXPECT_TRUE(Start());
    OpenGate();
  }
};

// The local times at which "job" ran, when it is added at `from`.
Runs RunTimes(const char* zone, const std::string& from, const std::string& to,
              const TriggerXml& trigger) {
  Running scheduler(zone, from);
  EXPECT_EQ(scheduler.AddTask("job", TaskXml().With(trigger)), 1);
  scheduler.RunUntil(to);
  Runs times;
  for (const auto& call : scheduler.Handler().Calls()) {
    times.push_back(TestScheduler::Show(call.m_Time));
  }
  return times;
}

TEST(TimeContract, StartThatANightDoesNotHaveMovesBehindTheGap) {
  EXPECT_EQ(RunTimes(NewYork, "2024-03-09 00:00:00", "2024-03-12 00:00:00",
                     TriggerXml::Daily("2024/03/09 02:30:00")),
            (Runs{"2024-03-09 02:30:00", "2024-03-10 03:30:00", "2024-03-11 02:30:00"}));
}

TEST(TimeContract, StartThatANightHasTwiceIsItsFirst) {
  Running scheduler(NewYork, "2024-11-03 00:00:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2024/11/03 01:30:00")));
  scheduler.RunUntil("2024-11-04 00:00:00");
  ASSERT_EQ(scheduler.Handler().Calls().size(), 1u);
  EXPECT_EQ(scheduler.Handler().Calls()[0].m_Time, 1730611800) << "05:30 UTC";
}

// Kept on purpose: what is written is local time, and the form of it is fixed.
TEST(TimeContract, RunInTheSecondShowingOfAnHourIsReadAsInTheFirstAndComesAgainOnce) {
  Running scheduler(NewYork, "2024-11-03 00:10:00");
  scheduler.AddTask(
      "job", TaskXml()
                 .With(TriggerXml::Daily("2024/11/01 00:00:00").EveryMinutes(30).ForMinutes(1440))
                 .LastRun("2024-11-03 00:00:00 Ok"));
  constexpr long MidnightUtc = 1730592000;
  scheduler.Clock().RunUntil(MidnightUtc + 8 * 3600L + 60);
  const auto at = [](long hour, long minute) { return MidnightUtc + hour * 3600 + minute * 60; };
  std::vector<long> moments;
  for (const auto& call : scheduler.Handler().Calls()) {
    moments.push_back(call.m_Time);
  }
  EXPECT_EQ(moments, (std::vector<long>{at(4, 30), at(5, 0), at(5, 30), at(6, 0), at(6, 10),
                                        at(6, 30), at(7, 0), at(7, 30), at(8, 0)}));
  EXPECT_EQ(scheduler.TimedBatches()[3], "2024-11-03 01:00:00 job:0:0:0;") << "standard time";
  EXPECT_EQ(scheduler.TimedBatches()[4], "2024-11-03 01:10:00 job:1:0:0;") << "the same, late";
}

TEST(TimeContract, EveryTwoDaysCanRunOnNeighbouringDays) {
  EXPECT_EQ(RunTimes(NewYork, "2024-03-09 00:00:00", "2024-03-15 00:00:00",
                     TriggerXml::Daily("2024/03/09 08:00:00", 2)),
            (Runs{"2024-03-09 08:00:00", "2024-03-10 08:00:00", "2024-03-12 08:00:00",
                  "2024-03-14 08:00:00"}));
}

TEST(TimeContract, EveryTwoWeeksTakesSundayWithTheWeekBefore) {
  // The first run is the begin itself, which is due whatever the weekday.
  EXPECT_EQ(RunTimes(NewYork, "2024-03-06 00:00:00", "2024-03-31 00:00:00",
                     TriggerXml::Weekly("2024/03/06 08:00:00", Sunday, 2)),
            (Runs{"2024-03-06 08:00:00", "2024-03-10 08:00:00", "2024-03-24 08:00:00"}));
}

TEST(TimeContract, StartAt2330IsLostBeforeADayOf23Hours) {
  EXPECT_EQ(RunTimes(NewYork, "2024-03-08 12:00:00", "2024-03-12 12:00:00",
                     TriggerXml::Daily("2024/03/08 23:30:00")),
            (Runs{"2024-03-08 23:30:00", "2024-03-09 23:30:00", "2024-03-11 23:30:00"}));
}

TEST(TimeContract, RepetitionsPastMidnightStopOnADayThatTheRuleDoesNotSelect) {
  EXPECT_EQ(
      RunTimes(Utc, "2024-01-08 20:00:00", "2024-01-15 23:30:00",
               TriggerXml::Weekly("2024/01/08 22:00:00", Monday).EveryMinutes(60).ForMinutes(240)),
      (Runs{"2024-01-08 22:00:00", "2024-01-08 23:00:00", "2024-01-09 00:00:00",
            "2024-01-15 22:00:00", "2024-01-15 23:00:00"}));
}

TEST(TimeContract, RepetitionsPastMidnightGoOnWhenTheNextDayIsSelectedToo) {
  EXPECT_EQ(RunTimes(Utc, "2024-01-08 20:00:00", "2024-01-09 12:00:00",
                     TriggerXml::Daily("2024/01/08 22:00:00").EveryMinutes(60).ForMinutes(240)),
            (Runs{"2024-01-08 22:00:00", "2024-01-08 23:00:00", "2024-01-09 00:00:00",
                  "2024-01-09 01:00:00", "2024-01-09 02:00:00"}));
}

TEST(TimeContract, RepetitionsRoundTheClockRestBehindEachStartUntilTheFilesAreReadAgain) {
  EXPECT_EQ(RunTimes(Utc, "2024-01-09 07:10:00", "2024-01-09 08:25:00",
                     TriggerXml::Daily("2024/01/08 07:30:00").EveryMinutes(10).ForMinutes(1440)),
            (Runs{"2024-01-09 07:10:00", "2024-01-09 07:20:00", "2024-01-09 07:30:00",
                  "2024-01-09 08:10:00", "2024-01-09 08:20:00"}));
  EXPECT_EQ(RunTimes(Utc, "2024-01-09 06:10:00", "2024-01-09 07:55:00",
                     TriggerXml::Daily("2024/01/08 07:30:00").EveryMinutes(10).ForMinutes(1380)),
            (Runs{"2024-01-09 06:10:00", "2024-01-09 06:20:00", "2024-01-09 06:30:00",
                  "2024-01-09 07:30:00", "2024-01-09 07:40:00", "2024-01-09 07:50:00"}));
}

TEST(TimeContract, DurationWithoutIntervalIsNoRepetition) {
  EXPECT_EQ(RunTimes(Utc, "2024-01-08 07:00:00", "2024-01-09 12:00:00",
                     TriggerXml::Daily("2024/01/08 08:00:00").ForMinutes(120)),
            (Runs{"2024-01-08 08:00:00", "2024-01-09 08:00:00"}));
}

TEST(TimeContract, TriggerThatNeverRanIsDueOnADayThatItsRuleDoesNotSelect) {
  Running scheduler(Utc, "2024-01-11 09:00:00");  // a Thursday
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Weekly("2024/01/10 08:00:00", Sunday)));
  scheduler.Clock().Settle();
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-11 09:00:00 job:1:1:0;"}));
}

TEST(TimeContract, EndBeforeTheBeginLeavesOneSecond) {
  const auto document =
      TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00").End("2024-01-09 00:00:00"));
  Running inTime(Utc, "2024-01-10 07:30:00");
  inTime.AddTask("job", document);
  inTime.RunUntil("2024-01-10 10:00:00");
  EXPECT_EQ(inTime.TimedBatches(), (Runs{"2024-01-10 08:00:00 job:0:1:0;"}));
  EXPECT_FALSE(inTime.HasFile("job"));
}

TEST(TimeContract, EndBeforeTheBeginSeenLaterDeletesTheTaskUnrun) {
  Running late(Utc, "2024-01-10 08:00:01");
  late.AddTask("job",
               TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00").End("2024-01-09 00:00:00")));
  late.Clock().Settle();
  EXPECT_TRUE(late.Batches().empty());
  EXPECT_FALSE(late.HasFile("job"));
}

TEST(TimeContract, LastRunInTheFutureHoldsTheTriggerBack) {
  Running scheduler(Utc, "2024-01-10 07:00:00");
  scheduler.AddTask(
      "job",
      TaskXml().With(TriggerXml::Daily("2024/01/01 08:00:00")).LastRun("2024-01-11 08:00:00 Ok"));
  scheduler.RunUntil("2024-01-12 12:00:00");
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-12 08:00:00 job:0:0:0;"}));
}

TEST(TimeContract, ClockSetForwardOverStartsMakesOneLateRunAtOnce) {
  Running scheduler(Utc, "2024-01-10 07:00:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00")));
  scheduler.RunUntil("2024-01-10 07:30:00");
  scheduler.Clock().StepWallClock(3 * 86400L);
  scheduler.Clock().Settle();
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-13 07:30:00 job:1:1:0;"}));
}

TEST(TimeContract, ClockSetBackRunsNothingTwiceAndReadsTheFilesAgain) {
  Running scheduler(Utc, "2024-01-10 07:00:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00")));
  scheduler.RunUntil("2024-01-10 08:30:00");
  const unsigned reloads = scheduler.Log().CountContaining(L"REFRESH TASK LIST!");
  scheduler.Clock().StepWallClock(-7200);
  scheduler.Clock().Settle();
  EXPECT_EQ(scheduler.Log().CountContaining(L"REFRESH TASK LIST!"), reloads + 1);
  scheduler.RunUntil("2024-01-10 09:00:00");
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-10 08:00:00 job:0:1:0;"}));
}

TEST(TimeContract, SuspendOverAStartRunsItAtResuming) {
  Running scheduler(Utc, "2024-01-10 07:00:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00")));
  scheduler.RunUntil("2024-01-10 07:30:00");
  scheduler.Clock().Suspend(7200);
  scheduler.Clock().Settle();
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-10 09:30:00 job:1:1:0;"}));
}

TEST(TimeContract, WhatWasMissedWhileTheAgentWasDownIsOneLateRun) {
  TestScheduler scheduler(Utc, "2024-01-10 07:00:00");
  ASSERT_TRUE(scheduler.Start());
  scheduler.AddTask(
      "job",
      TaskXml().With(TriggerXml::Daily("2024/01/01 08:00:00")).LastRun("2024-01-09 08:00:00 Ok"));
  scheduler.Stop();
  scheduler.RunUntil("2024-01-13 09:00:00");
  ASSERT_TRUE(scheduler.Start());
  scheduler.OpenGate();
  EXPECT_EQ(scheduler.TimedBatches(), (Runs{"2024-01-13 09:00:00 job:1:0:0;"}));
}

TEST(TimeContract, FailedRunIsTriedAgainAtTheNextReadingOfTheFiles) {
  Running scheduler(Utc, "2024-01-10 07:30:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2024/01/10 08:00:00")));
  scheduler.RunUntil("2024-01-10 08:00:00");
  scheduler.SetRunState("job", "Failed");
  scheduler.RunUntil("2024-01-10 08:29:59");
  EXPECT_EQ(scheduler.Batches().size(), 1u);
  scheduler.RunUntil("2024-01-10 08:30:00");
  EXPECT_EQ(scheduler.TimedBatches(),
            (Runs{"2024-01-10 08:00:00 job:0:1:0;", "2024-01-10 08:30:00 job:1:1:0;"}));
}

TEST(TimeContract, DailyTaskHasItsNextRunTomorrowThoughTwentyYearsAheadAreOutOfRange) {
  Running scheduler(Utc, "2026-11-21 09:00:00");
  scheduler.AddTask(
      "job",
      TaskXml().With(TriggerXml::Daily("2005/03/01 08:00:00")).LastRun("2026-11-21 08:00:00 Ok"));
  EXPECT_EQ(scheduler.Attribute("job", "t6"), "1795334400") << "2026-11-22 08:00:00";
}

TEST(TimeContract, AfterTheLastSecondTheMonitorLooksOnceAnHourAndRunsNothing) {
  Running scheduler(Utc, "2038-01-19 03:00:00");
  scheduler.AddTask("job", TaskXml().With(TriggerXml::Daily("2038/01/19 03:10:00")));
  scheduler.RunFor(6 * 3600L);
  EXPECT_EQ(scheduler.Batches().size(), 1u);
  EXPECT_LT(scheduler.Log().CountContaining(L"Task Thread is sleeping"), 20u);
}

}  // namespace
