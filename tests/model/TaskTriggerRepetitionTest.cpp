#include "tests/model/TriggerTable.h"

#include <gtest/gtest.h>

// Repetitions within the active period after a start, and periods without any: one row per
// question.
// clang-format off

namespace {

// At 08:00 for two hours every half hour.
constexpr const char* repeating = R"(<Trigger Type="1" Interval="30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsWithinItsActivePeriod) {
  const DueRow rows[] = {
      {utc, repeating, "-", "2005-03-01 08:00:00 +0000", "due", 1800, "2005-03-01 08:30:00 +0000"},
      {utc, repeating, "-", "2005-03-01 08:00:05 +0000", "due", 1795, "2005-03-01 08:30:00 +0000"},
      {utc, repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 08:29:59 +0000", "-", 1, "2005-03-01 08:30:00 +0000"},
      {utc, repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 08:30:02 +0000", "due", 1798, "2005-03-01 09:00:00 +0000"},
      {utc, repeating, "2005-03-01 08:00:10 +0000", "2005-03-01 09:59:00 +0000", "late", 60, "2005-03-01 10:00:00 +0000"},
      {utc, repeating, "2005-03-01 09:30:05 +0000", "2005-03-02 07:30:00 +0000", "-", 1800, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, FindsTheLastRepetitionUpToFiveSecondsAfterTheActivePeriod) {
  const DueRow rows[] = {
      {utc, repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:00 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:04 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, repeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:06 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, AMissedStartCountsFromTheStartAndNotFromItsLatestRepetitionOnPurpose) {
  const DueRow rows[] = {
      {utc, repeating, "-", "2005-03-01 08:30:10 +0000", "late", 1790, "2005-03-01 09:00:00 +0000"},
      {utc, repeating, "2005-03-01 10:00:01 +0000", "2005-03-02 08:30:10 +0000", "late", 1790, "2005-03-02 09:00:00 +0000"},
  };
  CheckAll(rows);
}

// 50 minutes do not divide two hours: 08:00, 08:50, 09:40.
constexpr const char* uneven = R"(<Trigger Type="1" Interval="50" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
// The interval is longer than the period.
constexpr const char* neverRepeats = R"(<Trigger Type="1" Interval="180" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepetitionsEndWithTheActivePeriod) {
  const DueRow rows[] = {
      {utc, uneven, "2005-03-01 08:50:02 +0000", "2005-03-01 09:40:02 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, uneven, "2005-03-01 09:40:02 +0000", "2005-03-01 10:00:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, uneven, "2005-03-01 08:50:02 +0000", "2005-03-01 10:00:05 +0000", "late", 0, "2005-03-02 08:00:00 +0000"},
      {utc, neverRepeats, "2005-03-01 08:00:02 +0000", "2005-03-01 10:00:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// At 23:00 on Tuesdays for two hours every half hour.
constexpr const char* overMidnight = R"(<Trigger Type="2" Interval="30" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate><DaysOfWeek>4</DaysOfWeek></Trigger>)";
constexpr const char* dailyOverMidnight = R"(<Trigger Type="1" Interval="30" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsPastMidnightOntoADayThatTheRuleDoesNotSelect) {
  const DueRow rows[] = {
      {utc, overMidnight, "2005-03-01 23:00:05 +0000", "2005-03-02 00:30:02 +0000", "due", 1798, "2005-03-02 01:00:00 +0000"},
      {utc, overMidnight, "2005-03-01 23:30:05 +0000", "2005-03-01 23:59:59 +0000", "-", 1, "2005-03-02 00:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, GoesOnPastMidnightFromARepetitionAfterMidnight) {
  const DueRow rows[] = {
      {utc, dailyOverMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 00:59:59 +0000", "-", 1, "2005-03-02 01:00:00 +0000"},
      {utc, dailyOverMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 01:00:01 +0000", "due", 79199, "2005-03-02 23:00:00 +0000"},
      {utc, dailyOverMidnight, "2005-03-02 01:00:01 +0000", "2005-03-02 01:00:05 +0000", "-", 79195, "2005-03-02 23:00:00 +0000"},
  };
  CheckAll(rows);
}

// Kept on purpose: the walk sets out on the day of the last run, which this rule does not select.
TEST(TaskTriggerRepetition, ForgetsFurtherRepetitionsOnceOneRanOnADayThatTheRuleDoesNotSelect) {
  const DueRow rows[] = {
      {utc, overMidnight, "2005-03-02 00:30:05 +0000", "2005-03-02 01:00:01 +0000", "-", 0, "2005-03-08 23:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* roundTheClock = R"(<Trigger Type="1" Interval="60" Duration="1440"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, RepeatsRoundTheClock) {
  const DueRow rows[] = {
      {utc, roundTheClock, "2005-03-01 23:00:05 +0000", "2005-03-02 00:00:02 +0000", "due", 3598, "2005-03-02 01:00:00 +0000"},
      {utc, roundTheClock, "2005-03-02 06:00:05 +0000", "2005-03-02 07:00:02 +0000", "due", 3598, "2005-03-02 08:00:00 +0000"},
      {utc, roundTheClock, "2005-03-02 07:00:05 +0000", "2005-03-02 08:00:02 +0000", "due", 3598, "2005-03-02 09:00:00 +0000"},
  };
  CheckAll(rows);
}

// 50 minutes do not divide a day: the last repetition is at 07:20.
constexpr const char* unevenRoundTheClock = R"(<Trigger Type="1" Interval="50" Duration="1440"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, UntilThePeriodEndsTheNextStartIsNotSleptForOnceNoRepetitionIsLeftOnPurpose) {
  const DueRow rows[] = {
      {utc, unevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 07:30:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, unevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 07:59:59 +0000", "-", 0, "2005-03-03 08:00:00 +0000"},
      {utc, unevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 08:00:00 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {utc, roundTheClock, "2005-03-02 07:00:05 +0000", "2005-03-02 08:00:00 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {utc, unevenRoundTheClock, "2005-03-02 07:25:00 +0000", "2005-03-02 08:00:01 +0000", "due", 2999, "2005-03-02 08:50:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, ADayWithoutAStartHasNoRepetitionsHoweverLongTheyMayGoOn) {
  constexpr const char* endless = R"(<Trigger Type="2" Interval="60" Duration="2147483647"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek></Trigger>)";
  const DueRow rows[] = {
      {utc, endless, "2005-03-01 08:00:05 +0000", "2005-03-02 08:00:10 +0000", "-", 0, "2005-03-07 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// A repetition each second: the grace after the period brings a few more, but not to a once trigger.
constexpr const char* eachSecond = R"(<Trigger Type="1" Interval="1" IntervalUnit="SECOND" Duration="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* onceEachSecond = R"(<Trigger Interval="1" IntervalUnit="SECOND" Duration="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* intervalOnly = R"(<Trigger Type="1" Interval="1" IntervalUnit="SECOND"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, TheGraceAddsRepetitionsShorterThanIt) {
  const DueRow rows[] = {
      {utc, eachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, eachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:06 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, onceEachSecond, "2005-03-01 08:00:59 +0000", "2005-03-01 08:01:03 +0000", "due", 0, "-"},
      {utc, onceEachSecond, "2005-03-01 08:01:00 +0000", "2005-03-01 08:01:03 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, AnIntervalWithoutADurationDoesNotRepeat) {
  const DueRow rows[] = {
      {utc, intervalOnly, "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:03 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* durationOnly = R"(<Trigger Type="1" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* durationOnlyAtNight = R"(<Trigger Type="1" Duration="120"><BeginDate>2005/03/01 23:00:00</BeginDate></Trigger>)";
constexpr const char* onceDurationOnly = R"(<Trigger Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, ADurationWithoutAnIntervalDoesNotRepeat) {
  const DueRow rows[] = {
      {utc, durationOnly, "-", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {utc, durationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, durationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 10:00:03 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, durationOnly, "2005-03-01 08:00:05 +0000", "2005-03-02 08:00:05 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {utc, onceDurationOnly, "2005-03-01 07:00:00 +0000", "2005-03-01 08:30:00 +0000", "late", 0, "-"},
      {utc, onceDurationOnly, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:00 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

// Inside the active period it does not sleep for the evening's start.
TEST(TaskTriggerRepetition, ADurationWithoutAnIntervalStillCountsAsAnActivePeriod) {
  const DueRow rows[] = {
      {utc, durationOnlyAtNight, "2005-03-02 00:30:00 +0000", "2005-03-02 00:40:00 +0000", "-", 0, "2005-03-02 23:00:00 +0000"},
      {utc, durationOnlyAtNight, "2005-03-02 00:30:00 +0000", "2005-03-02 01:40:00 +0000", "-", 76800, "2005-03-02 23:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* backward = R"(<Trigger Type="1" Interval="-30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* negativeDuration = R"(<Trigger Type="1" Interval="10" Duration="-5"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, ANegativeIntervalRepeatsButIsNotSleptForOnPurpose) {
  const DueRow rows[] = {
      {utc, backward, "2005-03-01 08:00:10 +0000", "2005-03-01 08:29:59 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, backward, "2005-03-01 08:00:10 +0000", "2005-03-01 08:30:02 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerRepetition, ANegativeDurationLooksAheadBySoMuchOnPurpose) {
  const DueRow rows[] = {
      {utc, negativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 08:10:02 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, negativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 23:54:59 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {utc, negativeDuration, "2005-03-01 08:00:10 +0000", "2005-03-01 23:55:00 +0000", "-", 29100, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* onceNegativeDuration = R"(<Trigger Interval="10" Duration="-5"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, OnceWithANegativeDurationTakesARunShortlyBeforeItsBeginForItsOwnOnPurpose) {
  const DueRow rows[] = {
      {utc, onceNegativeDuration, "2005-03-01 07:54:59 +0000", "2005-03-01 08:00:05 +0000", "due", 0, "-"},
      {utc, onceNegativeDuration, "2005-03-01 07:55:00 +0000", "2005-03-01 08:00:05 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

constexpr const char* onceRepeating = R"(<Trigger Interval="30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerRepetition, OnceRepeatsWhileItsLastRunLiesInTheFirstActivePeriod) {
  const DueRow rows[] = {
      {utc, onceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 08:10:00 +0000", "-", 1200, "2005-03-01 08:30:00 +0000"},
      {utc, onceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 08:30:02 +0000", "due", 1798, "2005-03-01 09:00:00 +0000"},
      {utc, onceRepeating, "2005-03-01 09:30:05 +0000", "2005-03-01 10:00:02 +0000", "due", 0, "-"},
      {utc, onceRepeating, "2005-03-01 10:00:02 +0000", "2005-03-01 10:00:04 +0000", "-", 0, "-"},
      {utc, onceRepeating, "2005-03-01 08:00:05 +0000", "2005-03-01 11:00:00 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

}  // namespace
