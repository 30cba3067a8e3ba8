#include "agent/handler/job/Retry.h"

#include <gtest/gtest.h>

namespace NoxHandlerTest {

using NoxHandler::RetryRule;

TEST(Retry, ReadsItsThreeForms) {
  const struct {
    const char* m_Text;
    RetryRule m_Rule;
  } rows[] = {{"hourly", {true, 0, 0}},
              {"never", {false, 0, 0}},
              {"1 every 30s", {false, 1, 30}},
              {"3  every\t5m", {false, 3, 300}},
              {"10 every 15m", {false, 10, 900}}};
  for (const auto& row : rows) {
    RetryRule rule{false, 7, 7};
    EXPECT_EQ(RetryRule::Read(row.m_Text, rule).ToUtf8(), "") << row.m_Text;
    EXPECT_EQ(rule, row.m_Rule) << row.m_Text;
  }
}

TEST(Retry, SaysWhatIsWrongWithAnyOther) {
  const char* const form =
      "is to be never, hourly, or how often and when again, such as \"3 every 5m\"";
  const struct {
    const char* m_Text;
    std::string m_Reason;
  } rows[] = {
      {"", form},
      {"Never", form},
      {"never again", form},
      {"3", form},
      {"3 every", form},
      {"3 each 5m", form},
      {"3 every 5m now", form},
      {"0 every 5m", "\"0\" is not a number of times from 1 to 10"},
      {"11 every 5m", "\"11\" is not a number of times from 1 to 10"},
      {"+3 every 5m", "\"+3\" is not a number of times from 1 to 10"},
      {"3 every 29s", "\"29s\" is to be at least 30s"},
      {"3 every 901", "\"901\" is to be at most 15m"},
      {"3 every day", "\"day\" is to be a number of seconds, or a number with s, m or h after it"}};
  for (const auto& row : rows) {
    RetryRule rule{false, 7, 7};
    EXPECT_EQ(RetryRule::Read(row.m_Text, rule).ToUtf8(), row.m_Reason) << row.m_Text;
    EXPECT_EQ(rule, (RetryRule{false, 7, 7})) << row.m_Text;
  }
}

}  // namespace NoxHandlerTest
