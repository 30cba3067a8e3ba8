#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

// The start on a day: one row per day asked about.
// clang-format off

namespace TaskTriggerStartTest {
namespace {

TEST(TaskTriggerStart, AsSoonAsPossibleStartsWheneverItIsAsked) {
  const AskedTrigger asked(R"(<Trigger Type="-1"/>)");
  for (const long moment : {-2147483647L - 1, -1L, 0L, 1109664000L, 2147483647L}) {
    EXPECT_EQ(asked.m_Trigger.GetTriggerStartTime(moment), moment);
  }
}

constexpr const char* Once = R"(<Trigger><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerStart, OnceIsOnTheBeginDayAlone) {
  const StartRow rows[] = {
      {Utc, Once, "2005-02-28 23:59:59 +0000", "-"},
      {Utc, Once, "2005-03-01 00:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, Once, "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, Once, "2005-03-01 23:59:59 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, Once, "2005-03-02 00:00:00 +0000", "-"},
      {Utc, Once, "2005-02-01 09:00:00 +0000", "-"},  // the same day of another month
      {Utc, Once, "2005-04-01 08:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

constexpr const char* Daily = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* EveryThirdDay = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysInterval>3</DaysInterval></Trigger>)";

TEST(TaskTriggerStart, DailyCountsItsIntervalFromTheBegin) {
  const StartRow rows[] = {
      {Utc, Daily, "2005-02-28 09:00:00 +0000", "-"},
      {Utc, Daily, "2005-03-01 00:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, Daily, "2005-03-02 23:00:00 +0000", "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "2037-12-31 12:00:00 +0000", "2037-12-31 08:00:00 +0000"},
      {Utc, EveryThirdDay, "2005-03-01 12:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, EveryThirdDay, "2005-03-02 12:00:00 +0000", "-"},
      {Utc, EveryThirdDay, "2005-03-03 12:00:00 +0000", "-"},
      {Utc, EveryThirdDay, "2005-03-04 12:00:00 +0000", "2005-03-04 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// Begins on a Wednesday; Sunday, Wednesday and Saturday.
constexpr const char* Biweekly = R"(<Trigger Type="2"><BeginDate>2005/03/02 08:00:00</BeginDate><WeeksInterval>2</WeeksInterval><DaysOfWeek>73</DaysOfWeek></Trigger>)";

TEST(TaskTriggerStart, WeeklyCountsWeeksFromSundayToSaturdayFromTheWeekOfTheBegin) {
  const StartRow rows[] = {
      {Utc, Biweekly, "2005-02-27 12:00:00 +0000", "-"},  // Sunday before the begin
      {Utc, Biweekly, "2005-03-02 12:00:00 +0000", "2005-03-02 08:00:00 +0000"},
      {Utc, Biweekly, "2005-03-03 12:00:00 +0000", "-"},
      {Utc, Biweekly, "2005-03-05 12:00:00 +0000", "2005-03-05 08:00:00 +0000"},
      {Utc, Biweekly, "2005-03-06 12:00:00 +0000", "-"},  // the week in between
      {Utc, Biweekly, "2005-03-09 12:00:00 +0000", "-"},
      {Utc, Biweekly, "2005-03-12 12:00:00 +0000", "-"},
      {Utc, Biweekly, "2005-03-13 12:00:00 +0000", "2005-03-13 08:00:00 +0000"},
      {Utc, Biweekly, "2005-03-19 12:00:00 +0000", "2005-03-19 08:00:00 +0000"},
      {Utc, Biweekly, "2005-03-20 12:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

constexpr const char* NoWeekday = R"(<Trigger Type="2"><BeginDate>2005/03/02 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerStart, AnEmptyMaskNeverMatches) {
  const StartRow rows[] = {
      {Utc, NoWeekday, "2005-03-02 12:00:00 +0000", "-"},
      {Utc, NoWeekday, "2005-03-06 12:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

// The 1st, 29th, 30th and 31st; January, February and April.
constexpr const char* ByDate = R"(<Trigger Type="3"><BeginDate>2005/01/01 08:00:00</BeginDate><DaysOfMonth>1879048193</DaysOfMonth><MonthsOfYear>11</MonthsOfYear></Trigger>)";

TEST(TaskTriggerStart, MonthlyByDateWantsTheBitOfTheDayAndOfTheMonth) {
  const StartRow rows[] = {
      {Utc, ByDate, "2005-01-01 12:00:00 +0000", "2005-01-01 08:00:00 +0000"},
      {Utc, ByDate, "2005-01-02 12:00:00 +0000", "-"},
      {Utc, ByDate, "2005-01-31 12:00:00 +0000", "2005-01-31 08:00:00 +0000"},
      {Utc, ByDate, "2005-02-28 12:00:00 +0000", "-"},
      {Utc, ByDate, "2008-02-29 12:00:00 +0000", "2008-02-29 08:00:00 +0000"},
      {Utc, ByDate, "2005-03-01 12:00:00 +0000", "-"},
      {Utc, ByDate, "2005-03-31 12:00:00 +0000", "-"},
      {Utc, ByDate, "2005-04-30 12:00:00 +0000", "2005-04-30 08:00:00 +0000"},
      {Utc, ByDate, "2004-04-30 12:00:00 +0000", "-"},  // before the begin
  };
  CheckAll(rows);
}

// Mondays of the first week, and of the fifth.
constexpr const char* FirstMonday = R"(<Trigger Type="4"><BeginDate>2005/01/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>4095</MonthsOfYear><Week>1</Week></Trigger>)";
constexpr const char* SecondMonday = R"(<Trigger Type="4"><BeginDate>2005/01/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>4095</MonthsOfYear><Week>2</Week></Trigger>)";
constexpr const char* FifthMonday = R"(<Trigger Type="4"><BeginDate>2005/01/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>4095</MonthsOfYear><Week>5</Week></Trigger>)";
constexpr const char* MondaysInMay = R"(<Trigger Type="4"><BeginDate>2005/01/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>16</MonthsOfYear><Week>1</Week></Trigger>)";

TEST(TaskTriggerStart, TheSeventhBelongsToTheSecondWeekOfTheMonthOnPurpose) {
  const StartRow rows[] = {
      {Utc, FirstMonday, "2005-08-01 12:00:00 +0000", "2005-08-01 08:00:00 +0000"},
      {Utc, FirstMonday, "2005-09-05 12:00:00 +0000", "2005-09-05 08:00:00 +0000"},
      {Utc, FirstMonday, "2005-06-06 12:00:00 +0000", "2005-06-06 08:00:00 +0000"},
      {Utc, FirstMonday, "2005-03-07 12:00:00 +0000", "-"},
      {Utc, FirstMonday, "2005-06-07 12:00:00 +0000", "-"},  // a Tuesday
      {Utc, SecondMonday, "2005-03-07 12:00:00 +0000", "2005-03-07 08:00:00 +0000"},
      {Utc, SecondMonday, "2005-06-13 12:00:00 +0000", "2005-06-13 08:00:00 +0000"},
      {Utc, SecondMonday, "2005-03-14 12:00:00 +0000", "-"},
      {Utc, FifthMonday, "2005-02-28 12:00:00 +0000", "2005-02-28 08:00:00 +0000"},
      {Utc, FifthMonday, "2005-01-31 12:00:00 +0000", "2005-01-31 08:00:00 +0000"},
      {Utc, FifthMonday, "2005-06-27 12:00:00 +0000", "-"},
      {Utc, MondaysInMay, "2005-05-02 12:00:00 +0000", "2005-05-02 08:00:00 +0000"},
      {Utc, MondaysInMay, "2005-06-06 12:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

constexpr const char* Nameless = R"(<Trigger Type="-2"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysInterval>3</DaysInterval></Trigger>)";

TEST(TaskTriggerStart, ANegativeTypeWithoutAMeaningFiresEveryDayOnPurpose) {
  const StartRow rows[] = {
      {Utc, Nameless, "2005-02-28 12:00:00 +0000", "-"},
      {Utc, Nameless, "2005-03-01 12:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Utc, Nameless, "2005-03-02 12:00:00 +0000", "2005-03-02 08:00:00 +0000"},
      {Utc, Nameless, "2005-03-03 12:00:00 +0000", "2005-03-03 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// New York: 2020-03-08 02:00 -0500 (1583650800) becomes 03:00 -0400; 2020-11-01 02:00 -0400
// (1604210400) becomes 01:00 -0500.
constexpr const char* DailyInTheGap = R"(<Trigger Type="1"><BeginDate>2020/01/05 02:30:00</BeginDate></Trigger>)";
constexpr const char* DailyInTheRepeat = R"(<Trigger Type="1"><BeginDate>2020/01/05 01:30:00</BeginDate></Trigger>)";

TEST(TaskTriggerStart, InASkippedHourLiesAsFarBehindTheChange) {
  const StartRow rows[] = {
      {NewYork, DailyInTheGap, "2020-03-07 12:00:00 -0500", "2020-03-07 02:30:00 -0500"},
      {NewYork, DailyInTheGap, "2020-03-08 01:59:59 -0500", "2020-03-08 03:30:00 -0400"},
      {NewYork, DailyInTheGap, "2020-03-08 03:00:00 -0400", "2020-03-08 03:30:00 -0400"},
      {NewYork, DailyInTheGap, "2020-03-09 12:00:00 -0400", "2020-03-09 02:30:00 -0400"},
      {"America/New_York", DailyInTheGap, "2020-03-08 12:00:00 -0400", "2020-03-08 03:30:00 -0400"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerStart, InARepeatedHourIsItsFirstShowingWhicheverIsAskedAbout) {
  const StartRow rows[] = {
      {NewYork, DailyInTheRepeat, "2020-10-31 12:00:00 -0400", "2020-10-31 01:30:00 -0400"},
      {NewYork, DailyInTheRepeat, "2020-11-02 12:00:00 -0500", "2020-11-02 01:30:00 -0500"},
      {NewYork, DailyInTheRepeat, "2020-11-01 01:30:00 -0400", "2020-11-01 01:30:00 -0400"},
      {NewYork, DailyInTheRepeat, "2020-11-01 01:30:00 -0500", "2020-11-01 01:30:00 -0400"},
      {NewYork, DailyInTheRepeat, "2020-11-01 23:59:59 -0500", "2020-11-01 01:30:00 -0400"},
      {"America/New_York", DailyInTheRepeat, "2020-11-01 12:00:00 -0500", "2020-11-01 01:30:00 -0400"},
  };
  CheckAll(rows);
}

// Lord Howe: 2020-10-04 02:00 +1030 becomes 02:30 +1100; 2020-04-05 02:00 +1100 becomes 01:30 +1030.
constexpr const char* DailyInHalfGap = R"(<Trigger Type="1"><BeginDate>2020/01/05 02:15:00</BeginDate></Trigger>)";
constexpr const char* DailyInHalfRepeat = R"(<Trigger Type="1"><BeginDate>2020/01/05 01:45:00</BeginDate></Trigger>)";

TEST(TaskTriggerStart, FollowsAHalfHourChange) {
  for (const char* zone : {LordHowe, "Australia/Lord_Howe"}) {
    const StartRow rows[] = {
        {zone, DailyInHalfGap, "2020-10-03 12:00:00 +1030", "2020-10-03 02:15:00 +1030"},
        {zone, DailyInHalfGap, "2020-10-04 12:00:00 +1100", "2020-10-04 02:45:00 +1100"},
        {zone, DailyInHalfGap, "2020-10-05 12:00:00 +1100", "2020-10-05 02:15:00 +1100"},
        {zone, DailyInHalfRepeat, "2020-04-05 12:00:00 +1030", "2020-04-05 01:45:00 +1100"},
        {zone, DailyInHalfRepeat, "2020-04-06 12:00:00 +1030", "2020-04-06 01:45:00 +1030"},
    };
    CheckAll(rows);
  }
}

constexpr const char* DailyAfterMidnight = R"(<Trigger Type="1"><BeginDate>2017/01/05 00:30:00</BeginDate></Trigger>)";

TEST(TaskTriggerStart, StaysOnADayWhoseMidnightIsSkipped) {
  const StartRow rows[] = {
      {SaoPaulo, DailyAfterMidnight, "2017-10-14 23:59:59 -0300", "2017-10-14 00:30:00 -0300"},
      {SaoPaulo, DailyAfterMidnight, "2017-10-15 01:00:00 -0200", "2017-10-15 01:30:00 -0200"},
      {"America/Sao_Paulo", DailyAfterMidnight, "2017-10-15 12:00:00 -0200", "2017-10-15 01:30:00 -0200"},
      {"Asia/Beirut", DailyAfterMidnight, "2022-03-27 12:00:00 +0300", "2022-03-27 01:30:00 +0300"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerStart, IsTheSameWhereWinterIsTheExceptionToStandardTime) {
  constexpr const char* InGap = R"(<Trigger Type="1"><BeginDate>2020/01/05 01:30:00</BeginDate></Trigger>)";
  for (const char* zone : {Dublin, "Europe/Dublin"}) {
    const StartRow rows[] = {
        {zone, InGap, "2020-03-28 12:00:00 +0000", "2020-03-28 01:30:00 +0000"},
        {zone, InGap, "2020-03-29 12:00:00 +0100", "2020-03-29 02:30:00 +0100"},
        {zone, InGap, "2020-10-25 12:00:00 +0000", "2020-10-25 01:30:00 +0100"},
        {zone, InGap, "2020-10-26 12:00:00 +0000", "2020-10-26 01:30:00 +0000"},
    };
    CheckAll(rows);
  }
}

TEST(TaskTriggerStart, PassesOverADayThatAZoneSkipped) {
  constexpr const char* Daily2011 = R"(<Trigger Type="1"><BeginDate>2011/12/01 08:00:00</BeginDate></Trigger>)";
  const StartRow rows[] = {
      {"Pacific/Apia", Daily2011, "2011-12-29 23:59:59 -1000", "2011-12-29 08:00:00 -1000"},
      {"Pacific/Apia", Daily2011, "2011-12-31 00:00:00 +1400", "2011-12-31 08:00:00 +1400"},
  };
  CheckAll(rows);
}

// 2018-05-04 23:30 +0830 became 00:00 +0900 of the 5th.
TEST(TaskTriggerStart, JumpsOntoTheNextDayWhereTheEndOfADayIsSkipped) {
  constexpr const char* LateDaily = R"(<Trigger Type="1"><BeginDate>2018/05/01 23:45:00</BeginDate></Trigger>)";
  const StartRow rows[] = {
      {"Asia/Pyongyang", LateDaily, "2018-05-03 12:00:00 +0830", "2018-05-03 23:45:00 +0830"},
      {"Asia/Pyongyang", LateDaily, "2018-05-04 12:00:00 +0830", "2018-05-05 00:15:00 +0900"},
      {"Asia/Pyongyang", LateDaily, "2018-05-05 12:00:00 +0900", "2018-05-05 23:45:00 +0900"},
  };
  CheckAll(rows);
}

// Days are elapsed days: 2020-03-08 has 23 hours.
constexpr const char* EveryOtherDay = R"(<Trigger Type="1"><BeginDate>2020/03/07 08:00:00</BeginDate><DaysInterval>2</DaysInterval></Trigger>)";

TEST(TaskTriggerStart, ATwoDayRhythmRunsOnNeighbouringDaysAcrossASpringChangeOnPurpose) {
  const StartRow rows[] = {
      {NewYork, EveryOtherDay, "2020-03-07 12:00:00 -0500", "2020-03-07 08:00:00 -0500"},
      {NewYork, EveryOtherDay, "2020-03-08 12:00:00 -0400", "2020-03-08 08:00:00 -0400"},
      {NewYork, EveryOtherDay, "2020-03-09 12:00:00 -0400", "-"},
      {NewYork, EveryOtherDay, "2020-03-10 12:00:00 -0400", "2020-03-10 08:00:00 -0400"},
      {NewYork, EveryOtherDay, "2020-11-01 12:00:00 -0500", "-"},
      {NewYork, EveryOtherDay, "2020-11-02 12:00:00 -0500", "2020-11-02 08:00:00 -0500"},
  };
  CheckAll(rows);
}

// Begins on Wednesday, 2020-03-04, every second week, Sundays and Wednesdays.
constexpr const char* Fortnight = R"(<Trigger Type="2"><BeginDate>2020/03/04 08:00:00</BeginDate><WeeksInterval>2</WeeksInterval><DaysOfWeek>9</DaysOfWeek></Trigger>)";

TEST(TaskTriggerStart, ATwoWeekRhythmTakesSundayWithTheWeekBeforeAfterASpringChangeOnPurpose) {
  const StartRow rows[] = {
      {NewYork, Fortnight, "2020-03-04 12:00:00 -0500", "2020-03-04 08:00:00 -0500"},
      {NewYork, Fortnight, "2020-03-08 12:00:00 -0400", "2020-03-08 08:00:00 -0400"},
      {NewYork, Fortnight, "2020-03-11 12:00:00 -0400", "-"},
      {NewYork, Fortnight, "2020-03-15 12:00:00 -0400", "-"},
      {NewYork, Fortnight, "2020-03-18 12:00:00 -0400", "2020-03-18 08:00:00 -0400"},
      {NewYork, Fortnight, "2020-03-22 12:00:00 -0400", "2020-03-22 08:00:00 -0400"},
  };
  CheckAll(rows);
}

// The day before a begin behind a spring change is less than a day before it.
TEST(TaskTriggerStart, LessThanADayBeforeTheBeginIsNoStartUnlessOnItsDay) {
  constexpr const char* AfterChange = R"(<Trigger Type="1"><BeginDate>2020/03/08 08:00:00</BeginDate></Trigger>)";
  const StartRow rows[] = {
      {NewYork, AfterChange, "2020-03-07 12:00:00 -0500", "-"},
      {NewYork, AfterChange, "2020-03-08 00:00:00 -0500", "2020-03-08 08:00:00 -0400"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerStart, OnceIsNotOnTheNextDayEitherWhereThatIsLessThanADayAway) {
  constexpr const char* BeforeChange = R"(<Trigger><BeginDate>2020/03/07 08:00:00</BeginDate></Trigger>)";
  const StartRow rows[] = {
      {NewYork, BeforeChange, "2020-03-07 12:00:00 -0500", "2020-03-07 08:00:00 -0500"},
      {NewYork, BeforeChange, "2020-03-08 12:00:00 -0400", "-"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerStart, BeyondTheEndOf32BitTimeIsNone) {
  constexpr const char* Morning = R"(<Trigger Type="1"><BeginDate>2037/01/01 03:00:00</BeginDate></Trigger>)";
  constexpr const char* Noon = R"(<Trigger Type="1"><BeginDate>2037/01/01 12:00:00</BeginDate></Trigger>)";
  const StartRow rows[] = {  // the last moment is 2038-01-19 03:14:07
      {Utc, Morning, "2147483647", "2038-01-19 03:00:00 +0000"},
      {Utc, Noon, "2147483647", "-"},
      {Utc, Noon, "2038-01-18 23:00:00 +0000", "2038-01-18 12:00:00 +0000"},
      {Utc, Morning, "-2147483648", "-"},
      {Utc, Noon, "-1", "-"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerStart, OfADisabledTriggerTakesCountsThatWereNeverReadForOne) {
  const VirtualTime::Zone zone(Utc);
  const long moment = Moment::At("2005-03-02 12:00:00 +0000");
  // The begin is -1, one second before midnight, or 0 where the type alone disabled the trigger.
  const struct { const char* type; const char* start; } rows[] = {
      {"0", "-"}, {"1", "2005-03-02 23:59:59 +0000"}, {"2", "-"}, {"3", "-"}, {"4", "-"},
      {"5", "2005-03-02 00:00:00 +0000"}, {"-2", "2005-03-02 23:59:59 +0000"}};
  for (const auto& row : rows) {
    const AskedTrigger asked(std::string("<Trigger Type=\"") + row.type + "\"/>");
    EXPECT_TRUE(asked.m_Trigger.m_Disabled) << row.type;
    EXPECT_EQ(asked.m_Trigger.m_DaysInterval, 0) << row.type;
    EXPECT_EQ(Moment::Show(asked.m_Trigger.GetTriggerStartTime(moment)), row.start) << row.type;
  }
  AskedTrigger weekly(R"(<Trigger Type="2"/>)");
  weekly.m_Trigger.m_DaysOfWeek = 127;
  EXPECT_EQ(Moment::Show(weekly.m_Trigger.GetTriggerStartTime(moment)), "2005-03-02 23:59:59 +0000");
}

}  // namespace
}  // namespace TaskTriggerStartTest
