#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

// The walk over days comes to an end, whatever the clock and the last run say.
namespace {

constexpr long FirstMoment = -2147483647L - 1;
constexpr long LastMoment = 2147483647L;

// clang-format off

// 2020-11-01 has 25 hours in New York: a day after its start at 00:30 it is 23:30 of the same day.
TEST(TaskTriggerWalk, GetsPastADayOf25HoursThatStartsInItsFirstHour) {
  constexpr const char* Trigger = R"(<Trigger Type="1"><BeginDate>2020/01/05 00:30:00</BeginDate></Trigger>)";
  constexpr const char* Ran = "2020-11-01 00:30:05 -0400";
  const DueRow rows[] = {
      {NewYork, Trigger, Ran, "2020-11-01 12:00:00 -0500", "-", 0, "2020-11-02 00:30:00 -0500"},
      {NewYork, Trigger, Ran, "2020-11-01 23:30:00 -0500", "-", 0, "2020-11-02 00:30:00 -0500"},
      {NewYork, Trigger, Ran, "2020-11-01 23:45:00 -0500", "-", 0, "2020-11-02 00:30:00 -0500"},
      {NewYork, Trigger, Ran, "2020-11-02 00:15:00 -0500", "-", 900, "2020-11-02 00:30:00 -0500"},
      {NewYork, Trigger, Ran, "2020-11-02 00:30:00 -0500", "due", 0, "2020-11-03 00:30:00 -0500"},
      {NewYork, Trigger, Ran, "2020-11-03 12:00:00 -0500", "late", 0, "2020-11-04 00:30:00 -0500"},
      {NewYork, Trigger, "2020-10-30 00:30:05 -0400", "2020-11-03 12:00:00 -0500", "late", 0, "2020-11-04 00:30:00 -0500"},
      {"America/New_York", Trigger, Ran, "2020-11-03 12:00:00 -0500", "late", 0, "2020-11-04 00:30:00 -0500"},
  };
  CheckAll(rows);
}

// The same where the step lands on the day again by half an hour, and where midnight itself repeats.
TEST(TaskTriggerWalk, GetsPastOtherLongDays) {
  constexpr const char* HalfHour = R"(<Trigger Type="1"><BeginDate>2020/01/05 00:15:00</BeginDate></Trigger>)";
  constexpr const char* Midnight = R"(<Trigger Type="1"><BeginDate>2018/01/05 00:00:00</BeginDate></Trigger>)";
  const DueRow rows[] = {
      {LordHowe, HalfHour, "2020-04-05 00:15:00 +1100", "2020-04-07 12:00:00 +1030", "late", 0, "2020-04-08 00:15:00 +1030"},
      {SaoPaulo, Midnight, "2018-02-17 00:00:00 -0200", "2018-02-19 12:00:00 -0300", "late", 0, "2018-02-20 00:00:00 -0300"},
      {"America/Havana", Midnight, "2018-11-04 00:00:00 -0400", "2018-11-06 12:00:00 -0500", "late", 0, "2018-11-07 00:00:00 -0500"},
  };
  CheckAll(rows);
}

// The next start after the one on the long day is five weeks away: elapsed weeks are counted.
TEST(TaskTriggerWalk, GetsPastALongDayOnTheWayToARareStart) {
  constexpr const char* Sundays = R"(<Trigger Type="2"><BeginDate>2020/01/05 00:30:00</BeginDate><WeeksInterval>6</WeeksInterval><DaysOfWeek>1</DaysOfWeek></Trigger>)";
  const DueRow rows[] = {
      {NewYork, Sundays, "2020-10-31 00:30:00 -0400", "2020-11-01 00:30:00 -0400", "due", 0, "2020-12-06 00:30:00 -0500"},
      {NewYork, Sundays, "2020-11-01 00:30:05 -0400", "2020-11-20 12:00:00 -0500", "-", 0, "2020-12-06 00:30:00 -0500"},
      {NewYork, Sundays, "2020-11-01 00:30:05 -0400", "2020-12-06 00:30:00 -0500", "due", 0, "2021-01-17 00:30:00 -0500"},
  };
  CheckAll(rows);
}

constexpr const char* At3 = R"(<Trigger Type="1"><BeginDate>2037/06/01 03:00:00</BeginDate></Trigger>)";
constexpr const char* RepeatingAt3 = R"(<Trigger Type="1" Interval="5" Duration="60"><BeginDate>2037/06/01 03:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerWalk, EndsAtTheEndOf32BitTime) {  // 2038-01-19 03:14:07
  const DueRow rows[] = {
      {Utc, At3, "2038-01-18 03:00:05 +0000", "2038-01-19 03:00:05 +0000", "due", 0, "-"},
      {Utc, At3, "2038-01-18 03:00:05 +0000", "2038-01-19 03:14:07 +0000", "late", 0, "-"},
      {Utc, At3, "2038-01-19 03:00:05 +0000", "2038-01-19 03:14:07 +0000", "-", 0, "-"},
      {Utc, At3, "2038-01-19 03:14:07 +0000", "2038-01-19 03:14:07 +0000", "-", 0, "-"},
      {Utc, At3, "2038-01-19 03:00:05 +0000", "2038-01-19 03:14:06 +0000", "-", 0, "-"},
      {Utc, RepeatingAt3, "2038-01-19 03:00:05 +0000", "2038-01-19 03:05:01 +0000", "due", 299, "2038-01-19 03:10:00 +0000"},
      // The repetition after the last moment is held to be at it.
      {Utc, RepeatingAt3, "2038-01-19 03:05:05 +0000", "2038-01-19 03:10:00 +0000", "due", 247, "2038-01-19 03:14:07 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerWalk, EndsWithALastRunOutsideAllStarts) {
  constexpr const char* Daily = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
  const DueRow rows[] = {
      {Utc, Daily, "-2147483648", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "-86400", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "-2", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "0", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "2147483647", "2005-03-01 08:00:05 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "2147400000", "2005-03-01 08:00:05 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// No clock shows such times any more, but a machine without one may.
TEST(TaskTriggerWalk, KnowsTheTimeBefore1970) {
  constexpr const char* Daily = R"(<Trigger Type="1"><BeginDate>1969-06-01 08:00:00</BeginDate></Trigger>)";
  constexpr const char* Late = R"(<Trigger Type="1"><BeginDate>1969-12-01 23:59:00</BeginDate></Trigger>)";
  constexpr const char* AtTheEpoch = R"(<Trigger Type="1"><BeginDate>1969-12-01 19:00:00</BeginDate></Trigger>)";
  constexpr const char* JustAfter = R"(<Trigger Type="1"><BeginDate>1969-12-01 19:00:01</BeginDate></Trigger>)";
  constexpr const char* Mondays = R"(<Trigger Type="2"><BeginDate>1969-06-01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek></Trigger>)";
  constexpr const char* Begins1990 = R"(<Trigger Type="1"><BeginDate>1990-06-01 08:00:00</BeginDate></Trigger>)";
  const DueRow rows[] = {
      // Never run is the moment -1 too, here one of the future.
      {Utc, Daily, "-", "1969-06-01 08:00:05 +0000", "-", 0, "1969-06-02 08:00:00 +0000"},
      {Utc, Daily, "-", "1969-12-31 08:00:05 +0000", "late", 0, "1970-01-01 08:00:00 +0000"},
      {Utc, Daily, "1969-06-01 08:00:05 +0000", "1969-06-02 08:00:05 +0000", "due", 0, "1969-06-03 08:00:00 +0000"},
      {Utc, Begins1990, "-", "1969-12-31 12:00:00 +0000", "-", 0, "1990-06-01 08:00:00 +0000"},
      // A start at or before the epoch is slept for, but is no next run; and no start is the moment -1.
      {Utc, Late, "1969-12-30 23:59:05 +0000", "1969-12-31 23:58:20 +0000", "-", 40, "1970-01-01 23:59:00 +0000"},
      {"EST5", JustAfter, "1969-12-30 19:00:05 -0500", "1969-12-31 18:59:20 -0500", "-", 41, "1969-12-31 19:00:01 -0500"},
      {"EST5", AtTheEpoch, "1969-12-30 19:00:05 -0500", "1969-12-31 18:59:20 -0500", "-", 40, "1970-01-01 19:00:00 -0500"},
      {Utc, Mondays, "1969-06-09 08:00:05 +0000", "1969-06-10 08:00:00 +0000", "-", 17683199, "1969-06-16 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// Zones that no government has yet come up with: days of up to 74 hours, a day shown three times.
const char* const zones[] = {
    Utc, NewYork, LordHowe, SaoPaulo, Dublin,
    "AAA-24:59:59BBB24:59:59,M3.2.0/0,M11.1.0/0", "AAA24:59:59BBB-24:59:59,M3.2.0/0,M11.1.0/0",
    "AAA-12BBB12,M3.2.0,M11.1.0", "AAA0BBB-23:30,J60/23:59:59,J300/0", "AAA0BBB-1,J60/0,J61/0",
    "Pacific/Apia", "Asia/Pyongyang", "Africa/Casablanca", "Antarctica/Troll"};

const char* const triggers[] = {
    R"(<Trigger><BeginDate>2011/03/01 00:00:00</BeginDate></Trigger>)",
    R"(<Trigger Interval="7" Duration="3000"><BeginDate>2011/03/01 23:59:59</BeginDate></Trigger>)",
    R"(<Trigger Type="1"><BeginDate>2011/03/01 00:00:00</BeginDate></Trigger>)",
    R"(<Trigger Type="1"><BeginDate>2011/03/01 00:30:00</BeginDate></Trigger>)",
    R"(<Trigger Type="1"><BeginDate>2011/03/01 23:59:59</BeginDate></Trigger>)",
    R"(<Trigger Type="1" Interval="45" Duration="1500"><BeginDate>2011/03/01 02:30:00</BeginDate></Trigger>)",
    R"(<Trigger Type="1" Interval="2147483647" Duration="2147483647"><BeginDate>2011/03/01 02:30:00</BeginDate></Trigger>)",
    R"(<Trigger Type="1" Interval="-2147483648" IntervalUnit="SECOND" Duration="-2147483648"><BeginDate>2011/03/01 02:30:00</BeginDate></Trigger>)",
    R"(<Trigger Type="1" Interval="-1" IntervalUnit="SECOND" Duration="2147483647"><BeginDate>2011/03/01 02:30:00</BeginDate></Trigger>)",
    R"(<Trigger Type="2"><BeginDate>2011/03/01 00:30:00</BeginDate><DaysOfWeek>65</DaysOfWeek><WeeksInterval>2</WeeksInterval></Trigger>)",
    R"(<Trigger Type="3"><BeginDate>2011/03/01 23:30:00</BeginDate><DaysOfMonth>-1</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear></Trigger>)",
    R"(<Trigger Type="-2"><BeginDate>2011/03/01 00:15:00</BeginDate></Trigger>)",
};

// clang-format on

// One moment in each zone's two months of change and at the ends, seen from last runs around it.
TEST(TaskTriggerWalk, EndsInEveryZoneWithEveryTriggerAndFindsANextRunAfterNow) {
  for (const char* zoneName : zones) {
    const VirtualTime::Zone zone(zoneName);
    for (const char* Trigger : triggers) {
      for (const char* day : {"2011-03-13 12:00:00 +0000", "2011-11-07 06:00:00 +0000",
                              "2011-12-31 00:30:00 +0000", "2018-05-05 12:00:00 +0000"}) {
        const long now = Moment::At(day);
        for (const long ago :
             {-100000L, 0L, 3L, 1800L, 40000L, 86400L, 90000L, 180000L, 1000000L}) {
          AskedTrigger asked(Trigger, now - ago);
          (void)asked.AnswerAt(now);
          const long nextRun = asked.m_Trigger.m_NextRun;
          EXPECT_TRUE(nextRun == -1 || nextRun > now)
              << zoneName << " " << Trigger << " last run " << now - ago << " now " << now;
        }
      }
    }
  }
}

void CheckEnds(const char* zoneName, const char* Trigger, long lastRun) {
  const VirtualTime::Zone zone(zoneName);
  for (const long now : {FirstMoment, FirstMoment + 1, -2L, -1L, 0L, 1L, LastMoment - 86400,
                         LastMoment - 1, LastMoment}) {
    AskedTrigger asked(Trigger, lastRun);
    (void)asked.AnswerAt(now);
    const long nextRun = asked.m_Trigger.m_NextRun;
    EXPECT_TRUE(nextRun >= -1 && nextRun <= LastMoment)
        << zoneName << " " << Trigger << " last run " << lastRun << " now " << now;
  }
}

TEST(TaskTriggerWalk, EndsAtBothEndsOf32BitTime) {
  for (const char* zone : {Utc, NewYork, "AAA-24:59:59BBB24:59:59,M3.2.0/0,M11.1.0/0"}) {
    for (const char* Trigger : triggers) {
      for (const long lastRun : {-1L, 2145000000L, LastMoment - 1, LastMoment}) {
        CheckEnds(zone, Trigger, lastRun);
      }
    }
  }
}

// Day by day through the whole range: milliseconds, and no more.
TEST(TaskTriggerWalk, EndsOnTheWayThroughTheWholeRange) {
  constexpr const char* Never = R"(<Trigger Type="1"><BeginDate>2011/03/01 00:30:00</BeginDate>)"
                                R"(<DaysInterval>2147483647</DaysInterval></Trigger>)";
  CheckEnds(NewYork, Never, FirstMoment);
  CheckEnds(NewYork, triggers[2], FirstMoment);
}

}  // namespace
