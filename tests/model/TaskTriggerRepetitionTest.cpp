#include "tests/model/TriggerTable.h"

#include <gtest/gtest.h>

// Repetitions within the active period after a start, and periods without any: one row per
// question.
// clang-format off

namespace {

// At 08:00 for two hours every half hour.
constexpr const char* Repeating = R"(<Trigger Type="1" Interval="30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsWithinItsActivePeriod) {
  const DueRow rows[] = {
      {Utc, Repeating, "-", "2005-03-01 08:00:00 +0000", "due", 1800, "2005-03-01 08:30:00 +0000"},
      {Utc, Repeating, "-", "2005-03-01 08:00:05 +0000", "due", 1795, "2005-03-01 08:30:00 +0000"},
      {Utc, Repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 08:29:59 +0000", "-", 1, "2005-03-01 08:30:00 +0000"},
      {Utc, Repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 08:30:02 +0000", "due", 1798, "2005-03-01 09:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 09:59:00 +0000", "late", 60, "2005-03-01 10:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 09:30:05 +0000", "2005-03-02 07:30:00 +0000", "-", 1800, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, FindsTheLastRepetitionUpToFiveSecondsAfterTheActivePeriod) {
  const DueRow rows[] = {
      {Utc, Repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:00 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:04 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:06 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, AMissedStartCountsFromTheStartAndNotFromItsLatestRepetitionOnPurpose) {
  const DueRow rows[] = {
      {Utc, Repeating, "-", "2005-03-01 08:30:10 +0000", "late", 1790, "2005-03-01 09:00:00 +0000"},
      {Utc, Repeating, "2005-03-01 10:00:01 +0000", "2005-03-02 08:30:10 +0000", "late", 1790, "2005-03-02 09:00:00 +0000"},
  };
  CheckAll(rows);
}

// 50 minutes do not divide two hours: 08:00, 08:50, 09:40.
constexpr const char* Uneven = R"(<Trigger Type="1" Interval="50" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
// The interval is longer than the period.
constexpr const char* NeverRepeats = R"(<Trigger Type="1" Interval="180" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepetitionsEndWithTheActivePeriod) {
  const DueRow rows[] = {
      {Utc, Uneven, "2005-03-01 08:50:02 +0000", "2005-03-01 09:40:02 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Uneven, "2005-03-01 09:40:02 +0000", "2005-03-01 10:00:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Uneven, "2005-03-01 08:50:02 +0000", "2005-03-01 10:00:05 +0000", "late", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, NeverRepeats, "2005-03-01 08:00:02 +0000", "2005-03-01 10:00:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// At 23:00 on Tuesdays for two hours every half hour.
constexpr const char* OverMidnight = R"(<Trigger Type="2" Interval="30" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate><DaysOfWeek>4</DaysOfWeek></Trigger>)";
constexpr const char* DailyOverMidnight = R"(<Trigger Type="1" Interval="30" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsPastMidnightOntoADayThatTheRuleDoesNotSelect) {
  const DueRow rows[] = {
      {Utc, OverMidnight, "2005-03-01 23:00:05 +0000", "2005-03-02 00:30:02 +0000", "due", 1798, "2005-03-02 01:00:00 +0000"},
      {Utc, OverMidnight, "2005-03-01 23:30:05 +0000", "2005-03-01 23:59:59 +0000", "-", 1, "2005-03-02 00:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, GoesOnPastMidnightFromARepetitionAfterMidnight) {
  const DueRow rows[] = {
      {Utc, DailyOverMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 00:59:59 +0000", "-", 1, "2005-03-02 01:00:00 +0000"},
      {Utc, DailyOverMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 01:00:01 +0000", "due", 79199, "2005-03-02 23:00:00 +0000"},
      {Utc, DailyOverMidnight, "2005-03-02 01:00:01 +0000", "2005-03-02 01:00:05 +0000", "-", 79195, "2005-03-02 23:00:00 +0000"},
  };
  CheckAll(rows);
}

// Kept on purpose: the walk sets out on the day of the last run, which this rule does not select.
TEST(TaskTriggerRepetition, ForgetsFurtherRepetitionsOnceOneRanOnADayThatTheRuleDoesNotSelect) {
  const DueRow rows[] = {
      {Utc, OverMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 01:00:01 +0000", "-", 0, "2005-03-08 23:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* RoundTheClock = R"(<Trigger Type="1" Interval="60" Duration="1440"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsRoundTheClock) {
  const DueRow rows[] = {
      {Utc, RoundTheClock, "2005-03-01 23:00:05 +0000", "2005-03-02 00:00:02 +0000", "due", 3598, "2005-03-02 01:00:00 +0000"},
      {Utc, RoundTheClock, "2005-03-02 06:00:05 +0000", "2005-03-02 07:00:02 +0000", "due", 3598, "2005-03-02 08:00:00 +0000"},
      {Utc, RoundTheClock, "2005-03-02 07:00:05 +0000", "2005-03-02 08:00:02 +0000", "due", 3598, "2005-03-02 09:00:00 +0000"},
  };
  CheckAll(rows);
}

// 50 minutes do not divide a day: the last repetition is at 07:20.
constexpr const char* UnevenRoundTheClock = R"(<Trigger Type="1" Interval="50" Duration="1440"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, UntilThePeriodEndsTheNextStartIsNotSleptForOnceNoRepetitionIsLeftOnPurpose) {
  const DueRow rows[] = {
      {Utc, UnevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 07:30:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, UnevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 07:59:59 +0000", "-", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, UnevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 08:00:00 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, RoundTheClock, "2005-03-02 07:00:05 +0000", "2005-03-02 08:00:00 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, UnevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 08:00:01 +0000", "due", 2999, "2005-03-02 08:50:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, ADayWithoutAStartHasNoRepetitionsHoweverLongTheyMayGoOn) {
  constexpr const char* Endless = R"(<Trigger Type="2" Interval="60" Duration="2147483647"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek></Trigger>)";
  const DueRow rows[] = {
      {Utc, Endless, "2005-03-01 08:00:05 +0000", "2005-03-02 08:00:10 +0000", "-", 0, "2005-03-07 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// A repetition each second: the grace after the period brings a few more, but not to a once trigger.
constexpr const char* EachSecond = R"(<Trigger Type="1" Interval="1" IntervalUnit="SECOND" Duration="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* OnceEachSecond = R"(<Trigger Interval="1" IntervalUnit="SECOND" Duration="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* IntervalOnly = R"(<Trigger Type="1" Interval="1" IntervalUnit="SECOND"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, TheGraceAddsRepetitionsShorterThanIt) {
  const DueRow rows[] = {
      {Utc, EachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, EachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:06 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, OnceEachSecond, "2005-03-01 08:00:59 +0000", "2005-03-01 08:01:03 +0000", "due", 0, "-"},
      {Utc, OnceEachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:03 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, AnIntervalWithoutADurationDoesNotRepeat) {
  const DueRow rows[] = {
      {Utc, IntervalOnly, "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:03 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* DurationOnly = R"(<Trigger Type="1" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* DurationOnlyAtNight = R"(<Trigger Type="1" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate></Trigger>)";
constexpr const char* OnceDurationOnly = R"(<Trigger Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, ADurationWithoutAnIntervalDoesNotRepeat) {
  const DueRow rows[] = {
      {Utc, DurationOnly, "-", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, DurationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, DurationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 10:00:03 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, DurationOnly, "2005-03-01 08:00:05 +0000", "2005-03-02 08:00:05 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, OnceDurationOnly, "2005-03-01 07:00:00 +0000", "2005-03-01 08:30:00 +0000", "late", 0, "-"},
      {Utc, OnceDurationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:00 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

// Inside the active period it does not sleep for the evening's start.
TEST(TaskTriggerRepetition, ADurationWithoutAnIntervalStillCountsAsAnActivePeriod) {
  const DueRow rows[] = {
      {Utc, DurationOnlyAtNight, "2005-03-02 00:30:00 +0000", "2005-03-02 00:40:00 +0000", "-", 0, "2005-03-02 23:00:00 +0000"},
      {Utc, DurationOnlyAtNight, "2005-03-02 00:30:00 +0000", "2005-03-02 01:40:00 +0000", "-", 76800, "2005-03-02 23:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* Backward = R"(<Trigger Type="1" Interval="-30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* NegativeDuration = R"(<Trigger Type="1" Interval="10" Duration="-5"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, ANegativeIntervalRepeatsButIsNotSleptForOnPurpose) {
  const DueRow rows[] = {
      {Utc, Backward, "2005-03-01 08:00:10 +0000", "2005-03-01 08:29:59 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Backward, "2005-03-01 08:00:10 +0000", "2005-03-01 08:30:02 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, ANegativeDurationLooksAheadBySoMuchOnPurpose) {
  const DueRow rows[] = {
      {Utc, NegativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 08:10:02 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, NegativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 23:54:59 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, NegativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 23:55:00 +0000", "-", 29100, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* OnceNegativeDuration = R"(<Trigger Interval="10" Duration="-5"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, OnceWithANegativeDurationTakesARunShortlyBeforeItsBeginForItsOwnOnPurpose) {
  const DueRow rows[] = {
      {Utc, OnceNegativeDuration, "2005-03-01 07:54:59 +0000", "2005-03-01 08:00:05 +0000", "due", 0, "-"},
      {Utc, OnceNegativeDuration, "2005-03-01 07:55:00 +0000", "2005-03-01 08:00:05 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

constexpr const char* OnceRepeating = R"(<Trigger Interval="30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, OnceRepeatsWhileItsLastRunLiesInTheFirstActivePeriod) {
  const DueRow rows[] = {
      {Utc, OnceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 08:10:00 +0000", "-", 1200, "2005-03-01 08:30:00 +0000"},
      {Utc, OnceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:02 +0000", "due", 1798, "2005-03-01 09:00:00 +0000"},
      {Utc, OnceRepeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:02 +0000", "due", 0, "-"},
      {Utc, OnceRepeating, "2005-03-01 10:00:02 +0000", "2005-03-01 10:00:04 +0000", "-", 0, "-"},
      {Utc, OnceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 11:00:00 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

}  // namespace
