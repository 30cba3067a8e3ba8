#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

// Runs across changes of the clock, as they come about when the trigger is asked like the monitor
// does it.
namespace {

using Runs = std::vector<std::string>;

struct RunsRow {
  const char* zone;
  const char* trigger;
  const char* from;
  const char* to;
  Runs runs;
};

void Check(const RunsRow& row) {
  const VirtualTime::Zone zone(row.zone);
  EXPECT_EQ(RunsBetween(row.trigger, row.from, row.to), row.runs) << row.zone << " " << row.trigger;
}

// clang-format off

// New York: 2020-03-08 02:00 -0500 (1583650800) becomes 03:00 -0400; 2020-11-01 02:00 -0400
// (1604210400) becomes 01:00 -0500.

TEST(TaskTriggerClockChange, AStartInTheSkippedHourRunsAfterTheChange) {
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/03/07 02:30:00</BeginDate></Trigger>)",
         "2020-03-07 00:00:00 -0500", "2020-03-10 00:00:00 -0400",
         {"2020-03-07 02:30:00 -0500", "2020-03-08 03:30:00 -0400", "2020-03-09 02:30:00 -0400"}});
}

TEST(TaskTriggerClockChange, AStartInTheRepeatedHourRunsOnceAtItsFirstShowing) {
  for (const char* zone : {NewYork, "America/New_York"}) {
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/10/31 01:30:00</BeginDate></Trigger>)",
           "2020-10-31 00:00:00 -0400", "2020-11-04 00:00:00 -0500",
           {"2020-10-31 01:30:00 -0400", "2020-11-01 01:30:00 -0400", "2020-11-02 01:30:00 -0500",
            "2020-11-03 01:30:00 -0500"}});
  }
}

TEST(TaskTriggerClockChange, AStartInTheFirstHourOfADayOf25HoursRunsOnceADay) {
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/10/31 00:30:00</BeginDate></Trigger>)",
         "2020-10-31 00:00:00 -0400", "2020-11-04 00:00:00 -0500",
         {"2020-10-31 00:30:00 -0400", "2020-11-01 00:30:00 -0400", "2020-11-02 00:30:00 -0500",
          "2020-11-03 00:30:00 -0500"}});
}

TEST(TaskTriggerClockChange, RepetitionsAreElapsedTimeWhenAnHourIsRepeated) {
  Check({NewYork, R"(<Trigger Interval="30" Duration="180"><BeginDate>2020/11/01 00:00:00</BeginDate></Trigger>)",
         "2020-10-31 20:00:00 -0400", "2020-11-02 00:00:00 -0500",
         {"2020-11-01 00:00:00 -0400", "2020-11-01 00:30:00 -0400", "2020-11-01 01:00:00 -0400",
          "2020-11-01 01:30:00 -0400", "2020-11-01 01:00:00 -0500", "2020-11-01 01:30:00 -0500",
          "2020-11-01 02:00:00 -0500"}});
}

TEST(TaskTriggerClockChange, RepetitionsAreElapsedTimeWhenAnHourIsSkipped) {
  Check({NewYork, R"(<Trigger Interval="30" Duration="120"><BeginDate>2020/03/08 01:00:00</BeginDate></Trigger>)",
         "2020-03-07 20:00:00 -0500", "2020-03-09 00:00:00 -0400",
         {"2020-03-08 01:00:00 -0500", "2020-03-08 01:30:00 -0500", "2020-03-08 03:00:00 -0400",
          "2020-03-08 03:30:00 -0400", "2020-03-08 04:00:00 -0400"}});
}

TEST(TaskTriggerClockChange, AStartInTheLastHourBeforeADayOf23HoursLosesThatDayOnPurpose) {
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/03/06 23:00:00</BeginDate></Trigger>)",
         "2020-03-06 00:00:00 -0500", "2020-03-11 00:00:00 -0400",
         {"2020-03-06 23:00:00 -0500", "2020-03-07 23:00:00 -0500", "2020-03-09 23:00:00 -0400",
          "2020-03-10 23:00:00 -0400"}});
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/03/06 22:59:59</BeginDate></Trigger>)",
         "2020-03-06 00:00:00 -0500", "2020-03-10 00:00:00 -0400",
         {"2020-03-06 22:59:59 -0500", "2020-03-07 22:59:59 -0500", "2020-03-08 22:59:59 -0400",
          "2020-03-09 22:59:59 -0400"}});
}

TEST(TaskTriggerClockChange, ATwoDayRhythmRunsOnNeighbouringDaysOnPurpose) {
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/03/05 08:00:00</BeginDate><DaysInterval>2</DaysInterval></Trigger>)",
         "2020-03-05 00:00:00 -0500", "2020-03-13 00:00:00 -0400",
         {"2020-03-05 08:00:00 -0500", "2020-03-07 08:00:00 -0500", "2020-03-08 08:00:00 -0400",
          "2020-03-10 08:00:00 -0400", "2020-03-12 08:00:00 -0400"}});
  Check({NewYork, R"(<Trigger Type="1"><BeginDate>2020/03/07 08:00:00</BeginDate><DaysInterval>2</DaysInterval></Trigger>)",
         "2020-03-07 00:00:00 -0500", "2020-03-12 00:00:00 -0400",
         {"2020-03-07 08:00:00 -0500", "2020-03-08 08:00:00 -0400", "2020-03-10 08:00:00 -0400"}});
}

// Lord Howe: 2020-10-04 02:00 +1030 becomes 02:30 +1100; 2020-04-05 02:00 +1100 becomes 01:30 +1030.

TEST(TaskTriggerClockChange, FollowsAHalfHourChange) {
  for (const char* zone : {LordHowe, "Australia/Lord_Howe"}) {
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/10/03 02:15:00</BeginDate></Trigger>)",
           "2020-10-03 00:00:00 +1030", "2020-10-06 00:00:00 +1100",
           {"2020-10-03 02:15:00 +1030", "2020-10-04 02:45:00 +1100", "2020-10-05 02:15:00 +1100"}});
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/04/04 01:45:00</BeginDate></Trigger>)",
           "2020-04-04 00:00:00 +1100", "2020-04-07 00:00:00 +1030",
           {"2020-04-04 01:45:00 +1100", "2020-04-05 01:45:00 +1100", "2020-04-06 01:45:00 +1030"}});
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/04/04 00:15:00</BeginDate></Trigger>)",
           "2020-04-04 00:00:00 +1100", "2020-04-07 00:00:00 +1030",
           {"2020-04-04 00:15:00 +1100", "2020-04-05 00:15:00 +1100", "2020-04-06 00:15:00 +1030"}});
  }
}

// São Paulo: 2017-10-15 00:00 -0300 becomes 01:00 -0200; 2018-02-18 00:00 -0200 becomes 23:00 -0300
// of the 17th.

TEST(TaskTriggerClockChange, FollowsAChangeAtMidnight) {
  for (const char* zone : {SaoPaulo, "America/Sao_Paulo"}) {
    Check({zone, R"(<Trigger Type="1"><BeginDate>2017/10/14 00:30:00</BeginDate></Trigger>)",
           "2017-10-14 00:00:00 -0300", "2017-10-17 00:00:00 -0200",
           {"2017-10-14 00:30:00 -0300", "2017-10-15 01:30:00 -0200", "2017-10-16 00:30:00 -0200"}});
    Check({zone, R"(<Trigger Type="1"><BeginDate>2017/10/14 00:00:00</BeginDate></Trigger>)",
           "2017-10-13 00:00:00 -0300", "2017-10-17 00:00:00 -0200",
           {"2017-10-14 00:00:00 -0300", "2017-10-15 01:00:00 -0200", "2017-10-16 00:00:00 -0200"}});
  }
  Check({"America/Sao_Paulo", R"(<Trigger Type="1"><BeginDate>2018/02/16 23:30:00</BeginDate></Trigger>)",
         "2018-02-16 00:00:00 -0200", "2018-02-20 00:00:00 -0300",
         {"2018-02-16 23:30:00 -0200", "2018-02-17 23:30:00 -0200", "2018-02-18 23:30:00 -0300",
          "2018-02-19 23:30:00 -0300"}});
  Check({"Asia/Beirut", R"(<Trigger Type="1"><BeginDate>2022/03/26 00:30:00</BeginDate></Trigger>)",
         "2022-03-26 00:00:00 +0200", "2022-03-29 00:00:00 +0300",
         {"2022-03-26 00:30:00 +0200", "2022-03-27 01:30:00 +0300", "2022-03-28 00:30:00 +0300"}});
}

TEST(TaskTriggerClockChange, FollowsAZoneWhoseWinterIsTheException) {
  for (const char* zone : {Dublin, "Europe/Dublin"}) {
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/03/28 01:30:00</BeginDate></Trigger>)",
           "2020-03-28 00:00:00 +0000", "2020-03-31 00:00:00 +0100",
           {"2020-03-28 01:30:00 +0000", "2020-03-29 02:30:00 +0100", "2020-03-30 01:30:00 +0100"}});
    Check({zone, R"(<Trigger Type="1"><BeginDate>2020/10/24 01:30:00</BeginDate></Trigger>)",
           "2020-10-24 00:00:00 +0100", "2020-10-27 00:00:00 +0000",
           {"2020-10-24 01:30:00 +0100", "2020-10-25 01:30:00 +0100", "2020-10-26 01:30:00 +0000"}});
  }
}

TEST(TaskTriggerClockChange, HasNoRunOnADayThatTheZoneSkips) {
  Check({"Pacific/Apia", R"(<Trigger Type="1"><BeginDate>2011/12/28 08:00:00</BeginDate></Trigger>)",
         "2011-12-28 00:00:00 -1000", "2012-01-02 00:00:00 +1400",
         {"2011-12-28 08:00:00 -1000", "2011-12-29 08:00:00 -1000", "2011-12-31 08:00:00 +1400",
          "2012-01-01 08:00:00 +1400"}});
  Check({"Pacific/Apia", R"(<Trigger Type="1"><BeginDate>2011/12/29 00:00:00</BeginDate></Trigger>)",
         "2011-12-28 00:00:00 -1000", "2012-01-02 00:00:00 +1400",
         {"2011-12-29 00:00:00 -1000", "2011-12-31 00:00:00 +1400", "2012-01-01 00:00:00 +1400"}});
}

// 2018-05-04 23:30 +0830 became 00:00 +0900 of the 5th: a day of less than 24 hours as well.
TEST(TaskTriggerClockChange, AStartInASkippedEndOfADayIsLostOnPurpose) {
  Check({"Asia/Pyongyang", R"(<Trigger Type="1"><BeginDate>2018/05/02 23:45:00</BeginDate></Trigger>)",
         "2018-05-02 00:00:00 +0830", "2018-05-07 00:00:00 +0900",
         {"2018-05-02 23:45:00 +0830", "2018-05-03 23:45:00 +0830", "2018-05-05 23:45:00 +0900",
          "2018-05-06 23:45:00 +0900"}});
}

TEST(TaskTriggerClockChange, ALateRunInTheLastHourBeforeADayOf23HoursDoesNotLoseThatDay) {
  constexpr const char* Trigger = R"(<Trigger Type="1"><BeginDate>2020/03/05 08:00:00</BeginDate></Trigger>)";
  const DueRow rows[] = {
      {NewYork, Trigger, "2020-03-07 23:50:00 -0500", "2020-03-08 08:00:05 -0400", "due", 0, "2020-03-09 08:00:00 -0400"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerClockChange, TheSecondShowingOfAStartThatRanIsNoStart) {
  constexpr const char* Trigger = R"(<Trigger Type="1"><BeginDate>2020/01/05 01:30:00</BeginDate></Trigger>)";
  const DueRow rows[] = {
      {NewYork, Trigger, "2020-11-01 01:30:00 -0400", "2020-11-01 01:30:00 -0500", "-", 0, "2020-11-02 01:30:00 -0500"},
      {NewYork, Trigger, "2020-11-01 01:30:00 -0400", "2020-11-01 12:00:00 -0500", "-", 0, "2020-11-02 01:30:00 -0500"},
      {NewYork, Trigger, "2020-10-31 01:30:00 -0400", "2020-11-01 01:30:00 -0500", "late", 0, "2020-11-02 01:30:00 -0500"},
  };
  CheckAll(rows);
}

}  // namespace
