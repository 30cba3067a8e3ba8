#include "agent/handler/job/ExitStatuses.h"

#include <gtest/gtest.h>

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(ExitStatuses, AreNumbersWithCommasBetween) {
  const struct {
    const char* m_Text;
    ExitStatuses m_Statuses;
  } rows[] = {{"0", {0}}, {"0,1", {0, 1}}, {"255 , 3,3", {3, 255}}, {"127", {127}}};
  for (const auto& row : rows) {
    ExitStatuses statuses{7};
    EXPECT_EQ(ReadExitStatuses(row.m_Text, statuses).ToUtf8(), "") << row.m_Text;
    EXPECT_EQ(statuses, row.m_Statuses) << row.m_Text;
  }
}

TEST(ExitStatuses, AreNothingElse) {
  for (const char* text : {"", ",", "0,", ",1", "0 1", "256", "-1", "+1", "01", "x", "0;1"}) {
    ExitStatuses statuses{7};
    EXPECT_EQ(ReadExitStatuses(text, statuses).ToUtf8(),
              "is to be exit statuses from 0 to 255 with commas between them, such as \"0, 1\"")
        << text;
    EXPECT_EQ(statuses, ExitStatuses{7});
  }
}

}  // namespace NoxHandlerTest
