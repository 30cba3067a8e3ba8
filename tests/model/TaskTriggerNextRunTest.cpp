#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace TaskTriggerNextRunTest {
namespace {

struct NextRow {
  const char* trigger;
  const char* from;
  const char* nextRun;
};

void Check(const NextRow& row) {
  const VirtualTime::Zone zone(Utc);
  AskedTrigger asked(row.trigger);
  asked.m_Trigger.CalculateNextRunTime(Moment::At(row.from), false);
  EXPECT_EQ(Moment::Show(asked.m_Trigger.m_NextRun), row.nextRun)
      << row.trigger << " from " << row.from;
}

template <std::size_t N>
void CheckAll(const NextRow (&rows)[N]) {
  for (const NextRow& row : rows) {
    Check(row);
  }
}

// clang-format off

constexpr const char* Daily = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* Once = R"(<Trigger><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";
constexpr const char* Asap = R"(<Trigger Type="-1"/>)";
constexpr const char* Disabled = R"(<Trigger Type="1" Disabled="Y"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerNextRun, IsTheFirstStartAtOrAfterTheMoment) {
  const NextRow rows[] = {
      {Daily, "2004-01-01 00:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Daily, "2005-03-01 07:59:59 +0000", "2005-03-01 08:00:00 +0000"},
      {Daily, "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {Daily, "2005-03-01 08:00:01 +0000", "2005-03-02 08:00:00 +0000"},
      {Daily, "2005-12-31 23:59:59 +0000", "2006-01-01 08:00:00 +0000"},
      {Disabled, "2005-03-01 07:00:00 +0000", "-"},
      {Asap, "2005-03-01 07:00:00 +0000", "2005-03-01 07:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerNextRun, OfOnceIsItsBeginAndNothingFromThereOn) {
  const NextRow rows[] = {
      {Once, "2005-03-01 07:59:59 +0000", "2005-03-01 08:00:00 +0000"},
      {Once, "2005-03-01 08:00:00 +0000", "-"},
      {Once, "2005-03-02 08:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

constexpr const char* LeapDay = R"(<Trigger Type="3"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysOfMonth>268435456</DaysOfMonth><MonthsOfYear>2</MonthsOfYear></Trigger>)";
constexpr const char* February30 = R"(<Trigger Type="3"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysOfMonth>536870912</DaysOfMonth><MonthsOfYear>2</MonthsOfYear></Trigger>)";
constexpr const char* NoDay = R"(<Trigger Type="3"><BeginDate>2005/03/01 08:00:00</BeginDate><MonthsOfYear>4095</MonthsOfYear></Trigger>)";

TEST(TaskTriggerNextRun, FindsTheLeapDayAndNoThirtiethOfFebruary) {
  const NextRow rows[] = {
      {LeapDay, "2005-03-01 08:00:01 +0000", "2008-02-29 08:00:00 +0000"},
      {LeapDay, "2008-02-29 08:00:01 +0000", "2012-02-29 08:00:00 +0000"},
      {February30, "2005-03-01 08:00:01 +0000", "-"},
      {NoDay, "2005-03-01 08:00:01 +0000", "-"},
  };
  CheckAll(rows);
}

constexpr const char* In7299Days = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysInterval>7299</DaysInterval></Trigger>)";
constexpr const char* In7300Days = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><DaysInterval>7300</DaysInterval></Trigger>)";

TEST(TaskTriggerNextRun, IsSearchedFor7300Days) {
  const NextRow rows[] = {
      {In7299Days, "2005-03-01 08:01:00 +0000", "2025-02-23 08:00:00 +0000"},
      {In7300Days, "2005-03-01 08:01:00 +0000", "-"},
      {In7300Days, "2005-03-02 08:01:00 +0000", "2025-02-24 08:00:00 +0000"},
  };
  CheckAll(rows);
}

constexpr const char* Ends = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><EndDate>2005-03-05 07:00:00</EndDate></Trigger>)";
constexpr const char* EndsAtBegin = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><EndDate>2005-03-01 08:00:00</EndDate></Trigger>)";

TEST(TaskTriggerNextRun, LiesBeforeTheEnd) {
  const NextRow rows[] = {
      {Ends, "2005-03-04 07:00:00 +0000", "2005-03-04 08:00:00 +0000"},
      {Ends, "2005-03-04 09:00:00 +0000", "-"},
      {Ends, "2005-03-05 07:00:00 +0000", "-"},
      {Ends, "2005-03-06 07:00:00 +0000", "-"},
      {EndsAtBegin, "2005-02-01 07:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

// The 1st, 3rd and 5th; the search looks at the moment that it has come to, not at the start there.
constexpr const char* EveryOtherDayEnds = R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate><EndDate>2005-03-05 07:00:00</EndDate><DaysInterval>2</DaysInterval></Trigger>)";

TEST(TaskTriggerNextRun, MayLieAfterTheEndOnTheDayOfTheEndOnPurpose) {
  const NextRow rows[] = {
      {EveryOtherDayEnds, "2005-03-04 06:59:59 +0000", "2005-03-05 08:00:00 +0000"},
      {EveryOtherDayEnds, "2005-03-04 07:00:00 +0000", "-"},
      {Ends, "2005-03-05 06:00:00 +0000", "2005-03-05 08:00:00 +0000"},
  };
  CheckAll(rows);
}

// The begin plus twenty years passes the end of 32-bit time for every moment after January 2018.
constexpr const char* Daily2017 = R"(<Trigger Type="1"><BeginDate>2017/01/01 03:00:00</BeginDate></Trigger>)";
constexpr const char* Begins2037 = R"(<Trigger Type="1"><BeginDate>2037/06/01 03:00:00</BeginDate></Trigger>)";

TEST(TaskTriggerNextRun, WithoutAnEndIsTomorrowWhereTheSearchLimitPassesTheEndOf32BitTime) {
  const NextRow rows[] = {
      {Daily2017, "2018-01-24 03:00:01 +0000", "2018-01-25 03:00:00 +0000"},
      {Daily2017, "2018-01-25 03:00:01 +0000", "2018-01-26 03:00:00 +0000"},
      {Daily2017, "2026-11-21 12:00:00 +0000", "2026-11-22 03:00:00 +0000"},
      {Daily2017, "2037-12-31 12:00:00 +0000", "2038-01-01 03:00:00 +0000"},
      {Begins2037, "2026-11-21 12:00:00 +0000", "2037-06-01 03:00:00 +0000"},
      {Daily2017, "2038-01-18 03:00:01 +0000", "2038-01-19 03:00:00 +0000"},
  };
  CheckAll(rows);
}

TEST(TaskTriggerNextRun, EndsAtTheLastMomentOf32BitTime) {  // 2038-01-19 03:14:07
  const NextRow rows[] = {
      {Daily2017, "2038-01-18 03:14:06 +0000", "2038-01-19 03:00:00 +0000"},
      {Daily2017, "2038-01-18 03:14:07 +0000", "-"},  // a day on, the search is at its limit
      {Daily2017, "2038-01-19 03:00:00 +0000", "2038-01-19 03:00:00 +0000"},
      {Daily2017, "2038-01-19 03:00:01 +0000", "-"},
      {Daily2017, "2147483647", "-"},
      {LeapDay, "2037-01-01 00:00:00 +0000", "-"},
  };
  CheckAll(rows);
}

// clang-format on

TEST(TaskTriggerNextRun, OfADailyTaskIsTomorrowAfterTodaysRun) {
  const DueRow row = {Utc, Daily2017, "2026-11-21 03:00:00 +0000", "2026-11-21 12:00:00 +0000",
                      "-", 0,         "2026-11-22 03:00:00 +0000"};
  CheckDue(row);
}

TEST(TaskTriggerNextRun, OfAnExpiredOrEventTriggerIsNone) {
  const VirtualTime::Zone zone(Utc);
  const long from = Moment::At("2005-03-01 07:00:00 +0000");
  AskedTrigger asked(Daily);
  asked.m_Trigger.CalculateNextRunTime(from, false);
  EXPECT_NE(asked.m_Trigger.m_NextRun, -1);
  asked.m_Trigger.CalculateNextRunTime(from, true);
  EXPECT_EQ(asked.m_Trigger.m_NextRun, -1);
  for (const long type : {6L, 7L}) {
    asked.m_Trigger.m_Type = type;
    asked.m_Trigger.m_NextRun = 5;
    asked.m_Trigger.CalculateNextRunTime(from, false);
    EXPECT_EQ(asked.m_Trigger.m_NextRun, -1) << type;
  }
}

class TaskTriggerClosestRun : public testing::Test {
 protected:
  CTaskTrigger& Updated(bool taskEnabled = true) {
    VirtualTime::VirtualClock::Instance().Start(m_Now);
    m_Asked.m_Trigger.UpdateClosestRun(taskEnabled);
    return m_Asked.m_Trigger;
  }

  VirtualTime::Zone m_Zone{Utc};
  AskedTrigger m_Asked{Daily};
  long m_Now = Moment::At("2005-03-01 09:00:00 +0000");
};

TEST_F(TaskTriggerClosestRun, IsNowWhileTheTriggerIsDue) {
  EXPECT_EQ(Updated().m_ClosestRun, m_Now);
  EXPECT_EQ(Moment::Show(Updated().m_NextRun), "2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerClosestRun, IsTheNextRunOtherwise) {
  m_Asked.m_LastRun = Moment::At("2005-03-01 08:00:00 +0000");
  EXPECT_EQ(Moment::Show(Updated().m_ClosestRun), "2005-03-02 08:00:00 +0000");
  m_Now = Moment::At("2005-03-02 07:00:00 +0000");
  EXPECT_EQ(Moment::Show(Updated().m_ClosestRun), "2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerClosestRun, IsNoneForADisabledTask) {
  (void)Updated();
  EXPECT_EQ(Updated(false).m_ClosestRun, -1);
  EXPECT_EQ(m_Asked.m_Trigger.m_NextRun, -1);
}

TEST_F(TaskTriggerClosestRun, OfAnEventTriggerIsNoneForItsFlagCountsAsUnset) {
  m_Asked.m_Trigger.m_Type = CTaskTrigger::FirstEvent;
  EXPECT_EQ(Updated().m_ClosestRun, -1);
}

TEST_F(TaskTriggerClosestRun, OfAsSoonAsPossibleIsNowUntilItRan) {
  AskedTrigger asked(Asap);
  VirtualTime::VirtualClock::Instance().Start(m_Now);
  asked.m_Trigger.UpdateClosestRun(true);
  EXPECT_EQ(asked.m_Trigger.m_ClosestRun, m_Now);
  asked.m_LastRun = m_Now;
  asked.m_Trigger.UpdateClosestRun(true);
  EXPECT_EQ(asked.m_Trigger.m_ClosestRun, -1);
}

}  // namespace
}  // namespace TaskTriggerNextRunTest
