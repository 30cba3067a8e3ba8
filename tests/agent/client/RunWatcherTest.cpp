#include "agent/client/RunWatcher.h"

#include <gtest/gtest.h>

#include <VirtualTime/Zone.h>

namespace NoxAgentTest {

using NoxAgent::RunEvent;
using NoxAgent::RunWatcher;
using std::chrono::milliseconds;

namespace {

std::string Ran(const std::string& runTime) {
  return "<Task><TaskHistory><RunTime>" + runTime + "</RunTime></TaskHistory></Task>";
}

class RunWatcherOfOneTask : public testing::Test {
 protected:
  std::optional<RunEvent> At(long millisecondsPastEight, const std::string& xml) {
    const RunWatcher::Clock::time_point eight(std::chrono::seconds(1781510400));
    return m_Watcher.Changed("T1", xml, eight + milliseconds(millisecondsPastEight));
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  RunWatcher m_Watcher;
};

}  // namespace

TEST_F(RunWatcherOfOneTask, MeasuresFromTheMomentTheStartWasSeen) {
  const auto started = At(40, Ran("2026-06-15 08:00:00 Started"));
  ASSERT_TRUE(started);
  EXPECT_EQ(RunEvent::Kind::Started, started->m_Kind);
  const auto finished = At(2540, Ran("2026-06-15 08:00:00 Ok"));
  ASSERT_TRUE(finished);
  EXPECT_EQ(RunEvent::Kind::Finished, finished->m_Kind);
  EXPECT_EQ(milliseconds(2500), finished->m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsAChangeOnce) {
  EXPECT_TRUE(At(0, Ran("2026-06-15 08:00:00 Started")));
  EXPECT_FALSE(At(1, Ran("2026-06-15 08:00:00 Started")));
  EXPECT_TRUE(At(2, Ran("2026-06-15 08:00:00 Failed")));
  EXPECT_FALSE(At(3, Ran("2026-06-15 08:00:00 Failed")));
}

TEST_F(RunWatcherOfOneTask, KnowsRunsFromBefore) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  EXPECT_FALSE(At(0, Ran("2026-06-15 07:00:00 Ok")));
}

TEST_F(RunWatcherOfOneTask, MeasuresARunFromBeforeByItsDocument) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:59:00 Started"));
  const auto finished = At(500, Ran("2026-06-15 07:59:00 Ok"));
  ASSERT_TRUE(finished);
  EXPECT_EQ(milliseconds(60500), finished->m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsARunThatWasOverBeforeAnyoneLooked) {
  const auto finished = At(700, Ran("2026-06-15 08:00:00 Ok"));
  ASSERT_TRUE(finished);
  EXPECT_EQ(RunEvent::Kind::Finished, finished->m_Kind);
  EXPECT_EQ(milliseconds(700), finished->m_Took);
}

TEST_F(RunWatcherOfOneTask, NeverTellsANegativeTime) {
  const auto finished = At(0, Ran("2026-06-15 08:00:01 Ok"));
  ASSERT_TRUE(finished);
  EXPECT_EQ(milliseconds(0), finished->m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsNoTimeForAStartThatCannotBeRead) {
  const auto finished = At(0, Ran("yesterday noon Ok"));
  ASSERT_TRUE(finished);
  EXPECT_FALSE(finished->m_Took);
}

TEST_F(RunWatcherOfOneTask, IgnoresDocumentsWithoutARun) {
  EXPECT_FALSE(At(0, "<Task/>"));
  EXPECT_FALSE(At(0, "not XML"));
  EXPECT_FALSE(At(0, Ran("")));
}

TEST_F(RunWatcherOfOneTask, ForgetsADeletedTask) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  m_Watcher.Forget("T1");
  EXPECT_TRUE(At(0, Ran("2026-06-15 07:00:00 Ok")));
}

}  // namespace NoxAgentTest
