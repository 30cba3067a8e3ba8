#include "agent/daemon/control/SchedulerReport.h"

#include <gtest/gtest.h>

namespace NoxAgent {
namespace {

using Ids = std::vector<std::string>;

TEST(SchedulerReport, IsTakenApart) {
  const SchedulerReport two(
      "Currently running tasks:\n a\n b c\n\n\nTask processing is enabled.\n");
  EXPECT_TRUE(two.m_IsOne);
  EXPECT_EQ(two.m_TaskIds, (Ids{"a", "b c"}));
  EXPECT_EQ(two.m_Rest, "Task processing is enabled.\n");
  const SchedulerReport none("Currently running tasks:\n\n\nTask processing is disabled.\n");
  EXPECT_TRUE(none.m_IsOne);
  EXPECT_TRUE(none.m_TaskIds.empty());
  EXPECT_EQ(none.m_Rest, "Task processing is disabled.\n");
}

TEST(SchedulerReport, AnyOtherReportStaysWhole) {
  for (const char* const text : {"", "Command handler: 0 running\n", " a\n"}) {
    const SchedulerReport report(text);
    EXPECT_FALSE(report.m_IsOne);
    EXPECT_EQ(report.m_Rest, text);
  }
  EXPECT_EQ(SchedulerReport("Currently running tasks:\n cut").m_TaskIds, Ids{"cut"});
}

}  // namespace
}  // namespace NoxAgent
