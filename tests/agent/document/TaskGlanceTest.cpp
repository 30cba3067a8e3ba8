#include "agent/document/TaskGlance.h"

#include <gtest/gtest.h>

namespace NoxAgent {
namespace {

TEST(TaskGlance, TellsWhetherTheTaskIsEnabledAsTheSchedulerReadsIt) {
  EXPECT_TRUE(GlanceAt("<Task/>").m_Enabled);
  EXPECT_TRUE(GlanceAt("<Task Enabled=''/>").m_Enabled);
  EXPECT_TRUE(GlanceAt("<Task Enabled='1'/>").m_Enabled);
  EXPECT_FALSE(GlanceAt("<Task Enabled='0'/>").m_Enabled);
  EXPECT_FALSE(GlanceAt("<Task Enabled='no'/>").m_Enabled);
  EXPECT_TRUE(GlanceAt("<Task><Task Enabled='0'/></Task>").m_Enabled);
}

TEST(TaskGlance, GivesTheRunEntryAsItIsWritten) {
  EXPECT_EQ(GlanceAt("<Task><TaskHistory><RunTime>2026-06-15 08:00:00 Ok</RunTime>"
                     "</TaskHistory></Task>")
                .m_RunTime,
            "2026-06-15 08:00:00 Ok");
  EXPECT_EQ(GlanceAt("<Task/>").m_RunTime, "");
}

TEST(TaskGlance, SaysNothingOfATextThatIsNoDocument) {
  EXPECT_TRUE(GlanceAt("<Task Enabled='0'>").m_Enabled);
  EXPECT_EQ(GlanceAt("").m_RunTime, "");
}

}  // namespace
}  // namespace NoxAgent
