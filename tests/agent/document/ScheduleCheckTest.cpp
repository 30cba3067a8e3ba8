// What `check` makes of the two years ahead, beyond the samples.
#include "agent/document/TaskDocumentCheck.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

using TestSupport::LordHowe;
using TestSupport::NewYork;
using TestSupport::Utc;
constexpr const char* Now = "2026-06-15 12:00:00";

std::string ProblemsOf(const std::string& xml) {
  const long now = Local(Now);
  const auto calendar = NoxAgent::CalendarForCheck(now);
  std::string text;
  for (const auto& problem :
       NoxAgent::CheckTaskDocument(BaseSDK::AString::FromUtf8(xml), now, &calendar)) {
    text += NoxAgent::DescribeTaskDocumentProblem(problem).ToUtf8() + "\n";
  }
  return text;
}

std::string CheckTriggers(const std::string& triggers, const std::string& lastRun = {}) {
  return ProblemsOf(TaskText(triggers, lastRun));
}

bool Has(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

struct DifferenceRow {
  const char* m_Zone;
  int m_Type;
  const char* m_Begin;
  const char* m_Attributes;
  const char* m_More;
  const char* m_Expected;  // part of the problem; empty for no problem
};

std::ostream& operator<<(std::ostream& out, const DifferenceRow& row) {
  return out << row.m_Zone << ' ' << row.m_Type << ' ' << row.m_Begin << ' ' << row.m_Attributes
             << ' ' << row.m_More;
}

class ScheduleCheckDifference : public testing::TestWithParam<DifferenceRow> {};

}  // namespace

TEST_P(ScheduleCheckDifference, IsToldWithItsFirstDate) {
  const DifferenceRow& row = GetParam();
  const VirtualTime::Zone zone(row.m_Zone);
  const std::string found =
      CheckTriggers(TriggerText(row.m_Type, Begin(row.m_Begin) + row.m_More, row.m_Attributes));
  if (*row.m_Expected == '\0') {
    EXPECT_EQ("", found);
  } else {
    EXPECT_TRUE(Has(found, row.m_Expected)) << found;
  }
}

const DifferenceRow DifferenceRows[] = {
    // A step of 24 hours, and days that are shorter.
    {NewYork, 1, "2026/07/06 23:00:00", "", "", "start of 2027-03-14 23:00:00"},
    {NewYork, 1, "2026/07/06 22:59:59", "", "", ""},
    {Utc, 1, "2026/07/06 23:30:00", "", "", ""},
    {LordHowe, 1, "2026/07/06 23:30:00", "", "", "begin before 23:30:00"},
    {LordHowe, 1, "2026/07/06 23:29:59", "", "", ""},
    // Sundays alone are short.
    {NewYork, 2, "2026/07/06 23:30:00", "", "<DaysOfWeek>62</DaysOfWeek>", ""},
    {NewYork, 2, "2026/07/05 23:30:00", "", "<DaysOfWeek>1</DaysOfWeek>",
     "start of 2027-03-14 23:30:00"},
    {NewYork, 1, "2026/07/06 23:30:00", "", "<EndDate>2027/03/14 12:00:00</EndDate>", ""},
    // A period and the next start.
    {Utc, 1, "2026/07/06 00:00:00", "Interval='10' Duration='1440'", "",
     "lost after them, from 2026-07-07 00:10:00 on; write a Duration of at most "
     "1430 minutes"},
    {Utc, 1, "2026/07/06 07:30:00", "Interval='10' Duration='1390'", "",
     "starts may come up to an hour late, the first at 2026-07-07 07:30:00"},
    {Utc, 1, "2026/07/06 07:30:00", "Interval='10' Duration='1380'", "", ""},
    {Utc, 1, "2026/07/06 08:00:00", "Duration='1440' KillAtEnd='1'", "",
     "starts may come up to an hour late"},
    {Utc, 1, "2026/07/06 08:00:00", "Duration='600' KillAtEnd='1'", "", ""},
    // Tuesdays follow Mondays, but nothing follows Fridays.
    {Utc, 2, "2026/07/06 22:00:00", "Interval='60' Duration='240'", "<DaysOfWeek>62</DaysOfWeek>",
     "the first of them at 2026-07-11 01:00:00"},
    {Utc, 2, "2026/07/06 22:00:00", "Interval='60' Duration='180'", "<DaysOfWeek>62</DaysOfWeek>",
     "write a Duration of at most 120 minutes"},
    {Utc, 2, "2026/07/06 22:00:00", "Interval='60' Duration='120'", "<DaysOfWeek>62</DaysOfWeek>",
     ""},
    {Utc, 0, "2026/07/06 22:00:00", "Interval='60' Duration='240'", "",
     "the first of them at 2026-07-07 01:00:00"},
    // Elapsed days and the calendar.
    {NewYork, 1, "2026/12/01 08:00:00", "", "<DaysInterval>2</DaysInterval>",
     "there is no run at 2027-03-15 08:00:00, but one at 2027-03-14 08:00:00"},
    {Utc, 1, "2026/12/01 08:00:00", "", "<DaysInterval>2</DaysInterval>", ""},
    {NewYork, 2, "2026/12/07 08:00:00", "",
     "<WeeksInterval>2</WeeksInterval><DaysOfWeek>2</DaysOfWeek>", ""},
    {NewYork, 2, "2026/12/06 08:00:00", "",
     "<WeeksInterval>2</WeeksInterval><DaysOfWeek>1</DaysOfWeek>",
     "there is no run at 2027-03-14 08:00:00"},
    // Far ahead, and numbers without measure.
    {NewYork, 1, "2038/01/18 22:14:07", "Interval='10' Duration='120'", "", ""},
    {NewYork, 1, "2038/01/05 08:00:00", "Interval='10' Duration='35791394'", "",
     "the Duration reaches too near"},
    {NewYork, 2, "2027/03/08 08:00:00", "",
     "<WeeksInterval>2147483647</WeeksInterval><DaysOfWeek>127</DaysOfWeek>", "weeks are counted"},
    // Weeks of a month.
    {Utc, 4, "2026/08/03 08:00:00", "",
     "<DaysOfWeek>2</DaysOfWeek><MonthsOfYear>128</MonthsOfYear>", ""},
    {Utc, 4, "2026/10/05 08:00:00", "",
     "<DaysOfWeek>2</DaysOfWeek><MonthsOfYear>3840</MonthsOfYear>",
     "there is no run on 2026-12-07, the first Monday of its month"}};

INSTANTIATE_TEST_SUITE_P(Rows, ScheduleCheckDifference, testing::ValuesIn(DifferenceRows));

TEST(ScheduleCheck, TellsOfTheFirstRunOnlyWhereThereWasNone) {
  const VirtualTime::Zone zone(NewYork);
  const std::string passed = TriggerText(1, Begin("2026/01/05 08:00:00"));
  EXPECT_TRUE(Has(CheckTriggers(passed), "BeginDate has passed"));
  EXPECT_TRUE(Has(CheckTriggers(passed), "write a BeginDate to come, like 2026/06/16 08:00:00"));
  EXPECT_TRUE(Has(CheckTriggers(passed, "2026-06-15 08:00:00 Failed"), "BeginDate has passed"));
  EXPECT_EQ("", CheckTriggers(passed, "2026-06-15 08:00:00 Ok"));
  EXPECT_EQ("", CheckTriggers(passed, "2026-06-15 08:00:00"));
  EXPECT_EQ("", CheckTriggers(passed + TriggerText(-1, "")));
  EXPECT_EQ("", CheckTriggers(TriggerText(1, Begin("2026/06/15 11:59:30"))));
}

TEST(ScheduleCheck, SuggestsADurationThatFitsBetweenStarts) {
  const VirtualTime::Zone zone(NewYork);
  const std::string found =
      CheckTriggers(TriggerText(1, Begin("2026/01/05 00:00:00"), "Interval='10' Duration='1440'"),
                    "2026-06-15 08:00:00 Ok");
  EXPECT_TRUE(Has(found, "write a Duration of at most 1430 minutes")) << found;
}

TEST(ScheduleCheck, BlamesNoStepForWhatAPeriodCovers) {
  const VirtualTime::Zone zone(Utc);
  const std::string found =
      CheckTriggers(TriggerText(1, Begin("2026/07/06 06:11:00"), "Interval='858' Duration='2215'"));
  EXPECT_TRUE(Has(found, "the Duration reaches too near to the next start")) << found;
  EXPECT_FALSE(Has(found, "passes over")) << found;
}

TEST(ScheduleCheck, TellsOfABeginOutsideTheRuleOnlyWhenItIsTheFirst) {
  const VirtualTime::Zone zone(NewYork);
  const std::string outside =
      TriggerText(2, Begin("2026/07/05 08:00:00") + Element("DaysOfWeek", 62));
  EXPECT_TRUE(Has(CheckTriggers(outside),
                  "once more on that day, at 2026-07-05 08:00:00 or up to an hour later; write a "
                  "BeginDate on a day of the rule, like 2026/07/06 08:00:00"));
  EXPECT_EQ("", CheckTriggers(outside + TriggerText(1, Begin("2026/07/01 09:00:00"))));
  EXPECT_EQ("", CheckTriggers(outside, "2026-06-15 08:00:00 Ok"));
}

TEST(ScheduleCheck, PointsAtWhatIsToBeMended) {
  const VirtualTime::Zone zone(NewYork);
  const std::string found = CheckTriggers(
      "\n<Trigger Type='1' Interval='10'\n"
      "  Duration='1440'><BeginDate>2026/12/01 00:00:00</BeginDate></Trigger>\n"
      "<Trigger Type='1'>\n <BeginDate>2026/12/01 23:30:00</BeginDate>\n"
      "  <DaysInterval>2</DaysInterval></Trigger>");
  EXPECT_TRUE(Has(found, "line 3, column 3: the Duration reaches")) << found;
  EXPECT_TRUE(Has(found, "line 5, column 2: the scheduler passes over")) << found;
  EXPECT_TRUE(Has(found, "line 6, column 3: days are counted")) << found;
}

TEST(ScheduleCheck, LeavesTheYearsAheadOutWithoutACalendar) {
  const VirtualTime::Zone zone(NewYork);
  const std::string xml = TaskText(TriggerText(1, Begin("2026/01/05 23:30:00")));
  EXPECT_TRUE(NoxAgent::CheckTaskDocument(BaseSDK::AString::FromUtf8(xml), Local(Now)).empty());
}

TEST(ScheduleCheck, LooksNoFurtherThanTheEndOfTime) {
  const VirtualTime::Zone zone(Utc);
  constexpr long LastMoment = 2147483647;
  const auto calendar = NoxAgent::CalendarForCheck(LastMoment);
  const std::string xml = TaskText(TriggerText(1, Begin("2026/01/05 08:00:00")));
  EXPECT_TRUE(
      NoxAgent::CheckTaskDocument(BaseSDK::AString::FromUtf8(xml), LastMoment, &calendar).empty());
}

TEST(ScheduleCheck, WhatItSuggestsIsGood) {
  const VirtualTime::Zone zone(NewYork);
  const std::string every2 = Element("DaysInterval", 2);
  const std::string found = CheckTriggers(TriggerText(1, Begin("2026/12/02 08:00:00") + every2));
  const std::string like = "like ";
  const std::size_t place = found.find(like);
  ASSERT_NE(std::string::npos, place) << found;
  const std::string mended = found.substr(place + like.size(), 19);
  EXPECT_EQ("", CheckTriggers(TriggerText(1, Begin(mended) + every2))) << mended;
}

}  // namespace NoxAgentTest
