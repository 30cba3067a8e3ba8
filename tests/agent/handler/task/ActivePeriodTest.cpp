#include "agent/handler/task/ActivePeriod.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ADateTime.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class ActivePeriod : public testing::Test {
 protected:
  void UseZone(const char* zone) {
    (void)setenv("TZ", zone, 1);
    tzset();
  }
  void TearDown() override {
    (void)unsetenv("TZ");
    tzset();
  }

  static std::string EndFor(const std::string& triggers, const char* runStart) {
    const AString xml(("<Task><Schedule>" + triggers + "</Schedule></Task>").c_str());
    const auto end = NoxHandler::ActivePeriod::EndFor(xml, ADateTime(AString(runStart)).GetTime());
    return end ? ADateTime(*end).ToString("%Y-%m-%d %H:%M:%S").ToUtf8() : "none";
  }
};

using TestSupport::Berlin;

std::string Trigger(const std::string& attributes, const std::string& children,
                    const std::string& begin = "2024/01/01 08:00:00") {
  return "<Trigger KillAtEnd='1' " + attributes + "><BeginDate>" + begin + "</BeginDate>" +
         children + "</Trigger>";
}

}  // namespace

TEST_F(ActivePeriod, EndsADurationAfterTheStartThatTheRunBelongsTo) {
  UseZone(Berlin);
  const struct {
    std::string m_Triggers;
    const char* m_RunStart;
    const char* m_End;
  } rows[] = {
      // once
      {Trigger("Type='0' Duration='60'", ""), "2024-01-01 08:00:00", "2024-01-01 09:00:00"},
      {Trigger("Type='0' Duration='60'", ""), "2024-01-01 08:59:59", "2024-01-01 09:00:00"},
      // daily, with a repetition, and over midnight
      {Trigger("Type='1' Duration='120' Interval='30'", ""), "2024-05-03 09:30:01",
       "2024-05-03 10:00:00"},
      {Trigger("Type='1' Duration='600'", "", "2024/01/01 20:00:00"), "2024-05-03 02:00:00",
       "2024-05-03 06:00:00"},
      // every third day from the first of January: the fourth has it, and a period of two days
      // reaches into the sixth
      {Trigger("Type='1' Duration='2880'", "<DaysInterval>3</DaysInterval>"), "2024-01-06 07:00:00",
       "2024-01-06 08:00:00"},
      // weekly on Mondays, for two days
      {Trigger("Type='2' Duration='2880'", "<DaysOfWeek>2</DaysOfWeek>"), "2024-01-09 09:00:00",
       "2024-01-10 08:00:00"},
      // on the tenth of each month
      {Trigger("Type='3' Duration='2880'",
               "<DaysOfMonth>512</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear>"),
       "2024-02-11 08:00:01", "2024-02-12 08:00:00"},
      // on the Monday of the month's second week, which begins with the seventh
      {Trigger("Type='4' Duration='2880'",
               "<DaysOfWeek>2</DaysOfWeek><Week>2</Week><MonthsOfYear>4095</MonthsOfYear>"),
       "2024-10-08 07:00:00", "2024-10-09 08:00:00"},
      // the clocks go forward and back within the period: it is a length, not a time of day
      {Trigger("Type='1' Duration='360'", "", "2024/01/01 00:00:00"), "2024-03-31 04:00:00",
       "2024-03-31 07:00:00"},
      {Trigger("Type='1' Duration='360'", "", "2024/01/01 00:00:00"), "2024-10-27 04:00:00",
       "2024-10-27 05:00:00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(EndFor(row.m_Triggers, row.m_RunStart), row.m_End)
        << row.m_Triggers << " at " << row.m_RunStart;
  }
}

TEST_F(ActivePeriod, GivesARunAfterThePeriodAWholeDuration) {
  UseZone(Berlin);
  EXPECT_EQ(EndFor(Trigger("Type='1' Duration='60'", ""), "2024-05-03 12:00:00"),
            "2024-05-03 13:00:00");
  EXPECT_EQ(EndFor(Trigger("Type='0' Duration='60'", ""), "2024-05-03 12:00:00"),
            "2024-05-03 13:00:00");
}

TEST_F(ActivePeriod, GrantsTheLastRepetitionItsFiveSeconds) {
  UseZone(Berlin);
  const std::string trigger = Trigger("Type='1' Duration='120' Interval='30'", "");
  EXPECT_EQ(EndFor(trigger, "2024-05-03 10:00:05"), "2024-05-03 10:00:00");
  EXPECT_EQ(EndFor(trigger, "2024-05-03 10:00:06"), "2024-05-03 12:00:06");
}

TEST_F(ActivePeriod, IsSetByTheTriggerThatWasDueLast) {
  UseZone(Berlin);
  const std::string early = Trigger("Type='1' Duration='600'", "", "2024/01/01 06:00:00");
  const std::string later = Trigger("Type='1' Duration='60'", "", "2024/01/01 08:00:00");
  EXPECT_EQ(EndFor(early + later, "2024-05-03 08:00:01"), "2024-05-03 09:00:00");
  EXPECT_EQ(EndFor(later + early, "2024-05-03 08:00:01"), "2024-05-03 09:00:00");
  EXPECT_EQ(EndFor(early + later, "2024-05-03 12:00:00"), "2024-05-03 16:00:00");
}

TEST_F(ActivePeriod, TakesTheEarlierEndOfTwoTriggersThatAreDueTogether) {
  UseZone(Berlin);
  const std::string longer = Trigger("Type='1' Duration='600'", "");
  const std::string shorter = Trigger("Type='1' Duration='60'", "");
  EXPECT_EQ(EndFor(longer + shorter, "2024-05-03 08:00:00"), "2024-05-03 09:00:00");
}

TEST_F(ActivePeriod, HasNoEndWithoutATriggerThatSetsOne) {
  UseZone(Berlin);
  const char* const rows[] = {
      "",
      "<Trigger Type='1' Duration='60'><BeginDate>2024/01/01 08:00:00</BeginDate></Trigger>",
      "<Trigger Type='1' KillAtEnd='0' Duration='60'><BeginDate>2024/01/01 08:00:00</BeginDate>"
      "</Trigger>",
      "<Trigger Type='1' KillAtEnd='1'><BeginDate>2024/01/01 08:00:00</BeginDate></Trigger>",
      "<Trigger Type='1' KillAtEnd='1' Duration='-5' Interval='1'><BeginDate>2024/01/01 08:00:00"
      "</BeginDate></Trigger>",
      "<Trigger Type='1' KillAtEnd='1' Duration='60'/>",
      "<Trigger Type='-1' KillAtEnd='1' Duration='60'/>",
      "<Trigger Type='6' KillAtEnd='1' Duration='60'><BeginDate>2024/01/01 08:00:00</BeginDate>"
      "</Trigger>",
      "<Trigger Disabled='y' Type='1' KillAtEnd='1' Duration='60'><BeginDate>2024/01/01 08:00:00"
      "</BeginDate></Trigger>",
  };
  for (const char* row : rows) {
    EXPECT_EQ(EndFor(row, "2024-05-03 08:00:00"), "none") << row;
  }
  EXPECT_FALSE(NoxHandler::ActivePeriod::EndFor("", 0).has_value());
}

TEST_F(ActivePeriod, EndsWithTheLastMomentOfA32BitClockAtTheLatest) {
  UseZone("UTC0");
  EXPECT_EQ(EndFor(Trigger("Type='1' Duration='2000000000'", ""), "2024-05-03 08:00:00"),
            "2038-01-19 03:14:07");
}

}  // namespace NoxHandlerTest
