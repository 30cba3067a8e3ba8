#include "tests/support/scheduler/TestScheduler.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TestSupport::TaskXml;
using TestSupport::TestScheduler;
using TestSupport::TriggerXml;
using Lines = std::vector<std::string>;

TEST(TestScheduler, RunsADailyTaskOnItsDays) {
  TestScheduler scheduler("CET-1CEST,M3.5.0,M10.5.0/3", "2005-03-25 07:00:00");
  ASSERT_TRUE(scheduler.Start());
  scheduler.OpenGate();
  EXPECT_EQ(scheduler.AddTask("backup", TaskXml().With(TriggerXml::Daily("2005/03/25 08:00:00"))),
            1);
  scheduler.RunUntil("2005-03-28 09:00:00");
  EXPECT_EQ(scheduler.TimedBatches(),
            (Lines{"2005-03-25 08:00:00 backup:0:1:0;", "2005-03-26 08:00:00 backup:0:0:0;",
                   "2005-03-27 08:00:00 backup:0:0:0;", "2005-03-28 08:00:00 backup:0:0:0;"}));
  EXPECT_EQ(scheduler.Files(), (Lines{"backup"}));
  EXPECT_NE(scheduler.FileText("backup").find("<RunTime>2005-03-28 08:00:00 Ok</RunTime>"),
            std::string::npos);
  EXPECT_EQ(scheduler.Handler().Releases(), 4U);
}

TEST(TestScheduler, HoldsTasksBackWhileTheGateIsClosed) {
  TestScheduler scheduler("UTC0", "2005-03-01 00:00:00");
  scheduler.Start();
  const std::string id = scheduler.AddUnnamedTask(TaskXml().With(TriggerXml::Asap()));
  scheduler.RunFor(7200);
  EXPECT_EQ(scheduler.Batches(), Lines{});
  scheduler.OpenGate();
  EXPECT_EQ(scheduler.Batches(), (Lines{id + ":0:1:0;"}));
}

TEST(TestScheduler, KeepsTasksAcrossARestart) {
  TestScheduler scheduler("UTC0", "2005-03-01 00:00:00");
  scheduler.Start();
  scheduler.AddTask("T1", TaskXml().With(TriggerXml::Once("2005/03/01 00:30:00")));
  scheduler.Stop();
  EXPECT_FALSE(scheduler.IsStarted());
  scheduler.Start();
  scheduler.OpenGate();
  scheduler.RunUntil("2005-03-01 00:30:00");
  EXPECT_EQ(scheduler.TimedBatches(), (Lines{"2005-03-01 00:30:00 T1:0:1:0;"}));
  EXPECT_EQ(scheduler.Attribute("T1", "t3"),
            std::to_string(TestScheduler::Local("2005-03-01 00:30:00")));
}

TEST(TestScheduler, YearOfHourlyCyclesLeavesOneRunADay) {
  TestScheduler scheduler("EST5EDT,M3.2.0,M11.1.0", "2005-01-01 00:00:00");
  scheduler.Start();
  scheduler.OpenGate();
  scheduler.AddTask("T1", TaskXml().With(TriggerXml::Daily("2005/01/01 06:00:00")));
  scheduler.RunUntil("2006-01-01 00:00:00");
  EXPECT_EQ(scheduler.Batches().size(), 365U);
}

}  // namespace
