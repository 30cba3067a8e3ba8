#include "agent/handler/task/DueTime.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ADateTime.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace NoxHandlerTest {

namespace {

constexpr long LookBack = 86400;

class DueTime : public testing::Test {
 protected:
  void SetUp() override {
    (void)setenv("TZ", TestSupport::Berlin, 1);
    tzset();
  }
  void TearDown() override {
    (void)unsetenv("TZ");
    tzset();
  }

  static std::string LastBefore(const std::string& triggers, const char* moment) {
    const AString xml(("<Task><Schedule>" + triggers + "</Schedule></Task>").c_str());
    const auto due =
        NoxHandler::DueTime::LastBefore(xml, ADateTime(AString(moment)).GetTime(), LookBack);
    return due ? ADateTime(*due).ToString("%Y-%m-%d %H:%M:%S").ToUtf8() : "none";
  }
};

std::string DatedTrigger(const std::string& attributes, const std::string& children = "",
                         const std::string& begin = "2024/01/01 08:00:00") {
  return "<Trigger " + attributes + "><BeginDate>" + begin + "</BeginDate>" + children +
         "</Trigger>";
}

}  // namespace

TEST_F(DueTime, IsTheLastStartOrRepetition) {
  const struct {
    std::string m_Triggers;
    const char* m_Moment;
    const char* m_Due;
  } rows[] = {{DatedTrigger("Type='1'"), "2024-05-03 09:30:00", "2024-05-03 08:00:00"},
              {DatedTrigger("Type='1'"), "2024-05-03 08:00:00", "2024-05-03 08:00:00"},
              {DatedTrigger("Type='1'"), "2024-05-03 07:59:59", "2024-05-02 08:00:00"},
              // the clocks have gone forward since
              {DatedTrigger("Type='1'"), "2024-03-31 07:30:00", "2024-03-30 08:00:00"},
              {DatedTrigger("Type='0'"), "2024-01-01 10:00:00", "2024-01-01 08:00:00"},
              // repetitions, of which the last is at the end of the duration
              {DatedTrigger("Type='1' Duration='120' Interval='30'"), "2024-05-03 09:15:00",
               "2024-05-03 09:00:00"},
              {DatedTrigger("Type='1' Duration='120' Interval='30'"), "2024-05-03 15:00:00",
               "2024-05-03 10:00:00"},
              // the later one of two triggers
              {DatedTrigger("Type='1'") + DatedTrigger("Type='1'", "", "2024/01/01 09:00:00"),
               "2024-05-03 09:30:00", "2024-05-03 09:00:00"},
              // a task that never ran is due from its begin on, whatever day that is: a Monday here
              {DatedTrigger("Type='2'", "<DaysOfWeek>8</DaysOfWeek>"), "2024-01-02 07:00:00",
               "2024-01-01 08:00:00"},
              // nothing is due after the end
              {DatedTrigger("Type='1'", "<EndDate>2024/05/02 12:00:00</EndDate>"),
               "2024-05-03 09:30:00", "2024-05-02 08:00:00"}};
  for (const auto& row : rows) {
    EXPECT_EQ(LastBefore(row.m_Triggers, row.m_Moment), row.m_Due)
        << row.m_Triggers << " at " << row.m_Moment;
  }
}

TEST_F(DueTime, IsNotKnownWithoutATriggerThatTellsIt) {
  for (const std::string& triggers :
       {std::string(), std::string("<Trigger Type='-1'/>"), std::string("<Trigger Type='1'/>"),
        DatedTrigger("Type='1' Disabled='1'"), DatedTrigger("Type='6'"),
        DatedTrigger("Type='1'", "", "2025/01/01 08:00:00")}) {
    EXPECT_EQ(LastBefore(triggers, "2024-05-03 09:30:00"), "none") << triggers;
  }
  EXPECT_FALSE(NoxHandler::DueTime::LastBefore("", 1700000000, LookBack));
}

}  // namespace NoxHandlerTest
