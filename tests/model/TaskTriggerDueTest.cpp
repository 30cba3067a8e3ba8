#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

// The due test: one row per question. A sleep of 0 means that the sleep asked for stays as it was.
// clang-format off

namespace TaskTriggerDueTest {
namespace {

constexpr const char* Daily = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerDue, DailyOnItsBeginDay) {
  const DueRow rows[] = {
      {Utc, Daily, "-", "2005-02-28 09:00:00 +0000", "-", 0, "2005-03-01 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-02-28 23:59:30 +0000", "-", 0, "2005-03-01 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 00:00:00 +0000", "-", 28800, "2005-03-01 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 07:59:59 +0000", "-", 1, "2005-03-01 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 08:00:00 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 08:00:30 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerDue, IsLateFromTheSixtiethSecondOn) {
  const DueRow rows[] = {
      {Utc, Daily, "-", "2005-03-01 08:00:59 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 08:01:00 +0000", "late", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-01 08:01:05 +0000", "late", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerDue, NeverRunFindsTheStartOfItsBeginAndIsLateOnALaterDay) {
  const DueRow rows[] = {
      {Utc, Daily, "-", "2005-03-03 07:00:00 +0000", "late", 3600, "2005-03-03 08:00:00 +0000"},
      {Utc, Daily, "-", "2005-03-03 08:00:10 +0000", "late", 0, "2005-03-04 08:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerDue, DailyAfterARun) {
  const DueRow rows[] = {
      {Utc, Daily, "2005-03-01 08:00:30 +0000", "2005-03-01 09:00:00 +0000", "-", 0, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "2005-03-01 08:00:30 +0000", "2005-03-02 07:00:00 +0000", "-", 3600, "2005-03-02 08:00:00 +0000"},
      {Utc, Daily, "2005-03-01 08:00:30 +0000", "2005-03-02 08:00:00 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, Daily, "2005-03-01 08:00:30 +0000", "2005-03-05 09:00:00 +0000", "late", 0, "2005-03-06 08:00:00 +0000"},
      {Utc, Daily, "2005-03-02 07:59:59 +0000", "2005-03-02 08:00:05 +0000", "due", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, Daily, "2005-03-02 08:00:00 +0000", "2005-03-02 08:00:05 +0000", "-", 0, "2005-03-03 08:00:00 +0000"},
      {Utc, Daily, "2005-01-01 12:00:00 +0000", "2005-03-01 08:00:05 +0000", "due", 0, "2005-03-02 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* Midnightly = R"(<Trigger Type="1"><BeginDate>2005/03/01 00:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerDue, TheSearchForTheNextRunLeavesOutTheMinuteUnderWayOnPurpose) {
  const DueRow rows[] = {
      {Utc, Midnightly, "2005-03-01 00:00:05 +0000", "2005-03-01 23:59:00 +0000", "-", 0, "2005-03-02 00:00:00 +0000"},
      {Utc, Midnightly, "2005-03-01 00:00:05 +0000", "2005-03-01 23:59:01 +0000", "-", 0, "2005-03-03 00:00:00 +0000"},
      {Utc, Midnightly, "2005-03-01 00:00:05 +0000", "2005-03-02 00:00:00 +0000", "due", 0, "2005-03-03 00:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerDue, ALastRunInTheFutureHoldsItBackUntilThen) {
  const DueRow rows[] = {
      {Utc, Daily, "2005-03-10 09:00:00 +0000", "2005-03-05 09:00:00 +0000", "-", 0, "2005-03-06 08:00:00 +0000"},
      {Utc, Daily, "2005-03-10 09:00:00 +0000", "2005-03-10 08:00:05 +0000", "-", 0, "2005-03-11 08:00:00 +0000"},
      {Utc, Daily, "2005-03-10 09:00:00 +0000", "2005-03-11 08:00:05 +0000", "due", 0, "2005-03-12 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// Begins on a Tuesday, selects Mondays.
constexpr const char* Mondays = R"(<Trigger Type="2"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysOfWeek>2</DaysOfWeek></Trigger>)";

TEST(TaskTriggerDue, NeverRunIsDueAtItsBeginAlsoOnADayThatItsRuleDoesNotSelect) {
  const DueRow rows[] = {
      {Utc, Mondays, "-", "2005-03-01 07:00:00 +0000", "-", 0, "2005-03-07 08:00:00 +0000"},
      {Utc, Mondays, "-", "2005-03-01 08:00:10 +0000", "due", 0, "2005-03-07 08:00:00 +0000"},
      {Utc, Mondays, "-", "2005-03-03 08:00:10 +0000", "late", 0, "2005-03-07 08:00:00 +0000"},
      {Utc, Mondays, "-", "2005-03-07 08:00:10 +0000", "due", 0, "2005-03-14 08:00:00 +0000"},
      {Utc, Mondays, "2005-03-01 08:00:10 +0000", "2005-03-02 08:00:10 +0000", "-", 0, "2005-03-07 08:00:00 +0000"},
      {Utc, Mondays, "2005-03-01 08:00:10 +0000", "2005-03-07 08:00:10 +0000", "due", 0, "2005-03-14 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// Begins on a Wednesday, every second week, Mondays and Fridays.
constexpr const char* Fortnight = R"(<Trigger Type="2"><BeginDate>2005/03/02 08:00:00</BeginDate><WeeksInterval>2</WeeksInterval><DaysOfWeek>34</DaysOfWeek></Trigger>)";

TEST(TaskTriggerDue, WeeklyEverySecondWeek) {
  const DueRow rows[] = {
      {Utc, Fortnight, "2005-03-02 08:00:05 +0000", "2005-03-04 08:00:05 +0000", "due", 0, "2005-03-14 08:00:00 +0000"},
      {Utc, Fortnight, "2005-03-04 08:00:05 +0000", "2005-03-11 08:00:05 +0000", "-", 0, "2005-03-14 08:00:00 +0000"},
      {Utc, Fortnight, "2005-03-04 08:00:05 +0000", "2005-03-14 08:00:05 +0000", "due", 0, "2005-03-18 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* Once = R"(<Trigger><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerDue, OnceIsDueOnceAndHasNoNextRun) {
  const DueRow rows[] = {
      {Utc, Once, "-", "2005-02-20 08:00:00 +0000", "-", 0, "2005-03-01 08:00:00 +0000"},
      {Utc, Once, "-", "2005-03-01 07:00:00 +0000", "-", 3600, "2005-03-01 08:00:00 +0000"},
      {Utc, Once, "-", "2005-03-01 08:00:10 +0000", "due", 0, "-"},
      {Utc, Once, "-", "2005-03-09 08:00:10 +0000", "late", 0, "-"},
      {Utc, Once, "2005-03-01 08:00:10 +0000", "2005-03-01 08:00:11 +0000", "-", 0, "-"},
      {Utc, Once, "2005-03-09 08:00:10 +0000", "2005-03-19 08:00:00 +0000", "-", 0, "-"},
      {Utc, Once, "2005-02-01 12:00:00 +0000", "2005-03-01 08:00:10 +0000", "due", 0, "-"},
  };
  CheckAll(rows);
}

constexpr const char* Ends = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><EndDate>2005-03-03 08:00:00</EndDate></Trigger>)";
constexpr const char* EndsBefore = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><EndDate>2005-02-01</EndDate></Trigger>)";

TEST(TaskTriggerDue, ExpiresTheSecondAfterItsEnd) {
  const DueRow rows[] = {
      {Utc, Ends, "2005-03-02 08:00:05 +0000", "2005-03-02 09:00:00 +0000", "-", 0, "-"},
      {Utc, Ends, "2005-03-02 08:00:05 +0000", "2005-03-03 07:00:00 +0000", "-", 3600, "2005-03-03 08:00:00 +0000"},
      {Utc, Ends, "2005-03-02 08:00:05 +0000", "2005-03-03 08:00:00 +0000", "due", 0, "-"},
      {Utc, Ends, "2005-03-02 08:00:05 +0000", "2005-03-03 08:00:01 +0000", "expired", 0, "-"},
      {Utc, Ends, "-", "2005-03-04 08:00:00 +0000", "expired", 0, "-"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerDue, AnEndMovedUpToTheBeginLeavesOneSecond) {
  const DueRow rows[] = {
      {Utc, EndsBefore, "-", "2005-03-01 07:59:59 +0000", "-", 1, "2005-03-01 08:00:00 +0000"},
      {Utc, EndsBefore, "-", "2005-03-01 08:00:00 +0000", "due", 0, "-"},
      {Utc, EndsBefore, "-", "2005-03-01 08:00:01 +0000", "expired", 0, "-"},
  };
  CheckAll(rows);
}

constexpr const char* Asap = R"(<Trigger Type="-1"/>)";
constexpr const char* AsapDated = R"(<Trigger Type="-1"><BeginDate>2030/01/01 00:00:00</BeginDate><EndDate>2030-02-01</EndDate></Trigger>)";

TEST(TaskTriggerDue, AsSoonAsPossibleIsDueWhileThereIsNoRunAndAlwaysExpired) {
  const DueRow rows[] = {
      {Utc, Asap, "-", "2005-03-01 08:00:00 +0000", "due expired", 0, "-"},
      {Utc, Asap, "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:01 +0000", "expired", 0, "-"},
      {Utc, AsapDated, "-", "2005-03-01 08:00:00 +0000", "due expired", 0, "-"},
  };
  CheckAll(rows);
}

constexpr const char* Disabled = R"(<Trigger Type="1" Disabled="yes"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* EventType = R"(<Trigger Type="6"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* WithoutBegin = R"(<Trigger Type="1" Interval="1" Duration="60"/>)";

TEST(TaskTriggerDue, DisabledIsNeverDueAndNeverExpired) {
  const DueRow rows[] = {
      {Utc, Disabled, "-", "2005-03-01 08:00:00 +0000", "-", 0, "-"},
      {Utc, EventType, "-", "2005-03-01 08:00:00 +0000", "-", 0, "-"},
      {Utc, WithoutBegin, "-", "2005-03-01 08:00:00 +0000", "-", 0, "-"},
      {Utc, "", "-", "2005-03-01 08:00:00 +0000", "-", 0, "-"},
  };
  CheckAll(rows);
}

// clang-format on

TEST(TaskTriggerDue, EventTypesAreDueExactlyWhileTheirFlagIsSetThoughNoDocumentMakesThem) {
  const VirtualTime::Zone zone(Utc);
  const long now = Moment::At("2005-03-01 08:00:00 +0000");
  AskedTrigger asked(Daily);
  for (const bool first : {false, true}) {
    for (const bool second : {false, true}) {
      asked.m_Trigger.m_Type = CTaskTrigger::FirstEvent;
      EXPECT_EQ(asked.AnswerAt(now, first, second), first ? "due" : "-");
      EXPECT_EQ(asked.m_Trigger.m_NextRun, -1);
      asked.m_Trigger.m_Type = CTaskTrigger::SecondEvent;
      EXPECT_EQ(asked.AnswerAt(now, first, second), second ? "due" : "-");
      EXPECT_EQ(asked.m_Trigger.m_NextRun, -1);
      EXPECT_EQ(asked.m_SleepSeconds, AskedTrigger::LongSleep);
    }
  }
}

TEST(TaskTriggerDue, EventFlagsDoNotMoveADatedOrDisabledTrigger) {
  const VirtualTime::Zone zone(Utc);
  AskedTrigger dated(Daily);
  EXPECT_EQ(dated.AnswerAt(Moment::At("2005-02-01 08:00:00 +0000"), true, true), "-");
  AskedTrigger disabledEvent(EventType);
  EXPECT_EQ(disabledEvent.AnswerAt(Moment::At("2005-03-01 08:00:00 +0000"), true, true), "-");
}

TEST(TaskTriggerDue, SaysWhetherTheNextRunMoved) {
  const VirtualTime::Zone zone(Utc);
  AskedTrigger asked(Daily);
  asked.AnswerAt(Moment::At("2005-03-01 07:00:00 +0000"));
  EXPECT_TRUE(asked.m_NextRunChanged);
  asked.AnswerAt(Moment::At("2005-03-01 07:30:00 +0000"));
  EXPECT_FALSE(asked.m_NextRunChanged);
  asked.AnswerAt(Moment::At("2005-03-01 08:00:00 +0000"));
  EXPECT_TRUE(asked.m_NextRunChanged);
}

TEST(TaskTriggerDue, OnlyLowersTheSleep) {
  const VirtualTime::Zone zone(Utc);
  AskedTrigger asked(Daily);
  asked.AnswerAt(Moment::At("2005-03-01 07:00:00 +0000"));
  bool late = false;
  bool expired = false;
  bool changed = false;
  for (const auto& [given, left] :
       {std::pair{3601L, 3600L}, {3600L, 3600L}, {10L, 10L}, {-5L, -5L}}) {
    long sleepSeconds = given;
    asked.m_Trigger.IsDue(false, false, sleepSeconds, late, expired, changed);
    EXPECT_EQ(sleepSeconds, left) << given;
  }
}

TEST(TaskTriggerDue, LeavesTheFlagsOfTheCallerAloneUnlessItHasAnAnswer) {
  const VirtualTime::Zone zone(Utc);
  long sleepSeconds = 0;
  bool changed = false;
  const auto ask = [&](const char* xml, bool late, bool expired) {
    AskedTrigger asked(xml);
    asked.m_Trigger.IsDue(false, false, sleepSeconds, late, expired, changed);
    return std::pair(late, expired);
  };
  AskedTrigger(Daily).AnswerAt(Moment::At("2005-03-01 07:00:00 +0000"));
  EXPECT_EQ(ask(Daily, true, true), std::pair(true, true));
  EXPECT_EQ(ask(Asap, true, false), std::pair(true, true));  // due, but never assigns late
  AskedTrigger(Daily).AnswerAt(Moment::At("2005-03-01 08:00:00 +0000"));
  EXPECT_EQ(ask(Daily, true, false), std::pair(false, false));
}

// A caller that comes with `expired` set has its trigger searched no next run.
TEST(TaskTriggerDue, TakesAnExpiredFlagOfTheCallerForItsOwnInTheSearch) {
  const VirtualTime::Zone zone(Utc);
  AskedTrigger asked(Daily);
  asked.AnswerAt(Moment::At("2005-03-01 09:00:00 +0000"));
  EXPECT_EQ(Moment::Show(asked.m_Trigger.m_NextRun), "2005-03-02 08:00:00 +0000");
  long sleepSeconds = 0;
  bool late = false;
  bool expired = true;
  bool changed = false;
  EXPECT_TRUE(asked.m_Trigger.IsDue(false, false, sleepSeconds, late, expired, changed));
  EXPECT_EQ(asked.m_Trigger.m_NextRun, -1);
}

}  // namespace
}  // namespace TaskTriggerDueTest
