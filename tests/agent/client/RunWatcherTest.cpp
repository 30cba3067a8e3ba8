#include "agent/client/RunWatcher.h"

#include <VirtualTime/Zone.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::RunEvent;
using NoxAgent::RunWatcher;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Kind = RunEvent::Kind;

namespace {

// 2026-06-15 08:00:00 in UTC.
constexpr RunWatcher::Clock::time_point Eight{std::chrono::seconds(1781510400)};

MATCHER_P2(Is, kind, millisecondsPastEight, "") {
  return arg.m_Kind == kind && arg.m_Time == Eight + milliseconds(millisecondsPastEight);
}

std::string Ran(const std::string& runTime) {
  return "<Task><TaskHistory><RunTime>" + runTime + "</RunTime></TaskHistory></Task>";
}

class RunWatcherOfOneTask : public testing::Test {
 protected:
  std::vector<RunEvent> At(long millisecondsPastEight, const std::string& xml) {
    return m_Watcher.Changed("T1", xml, Eight + milliseconds(millisecondsPastEight));
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  RunWatcher m_Watcher;
};

}  // namespace

TEST_F(RunWatcherOfOneTask, MeasuresFromTheMomentTheStartWasSeen) {
  EXPECT_THAT(At(40, Ran("2026-06-15 08:00:00 Started")), ElementsAre(Is(Kind::Started, 40)));
  const auto finished = At(2540, Ran("2026-06-15 08:00:00 Ok"));
  ASSERT_THAT(finished, ElementsAre(Is(Kind::Finished, 2540)));
  EXPECT_EQ(milliseconds(2500), finished[0].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsAChangeOnce) {
  EXPECT_THAT(At(0, Ran("2026-06-15 08:00:00 Started")), SizeIs(1));
  EXPECT_THAT(At(1, Ran("2026-06-15 08:00:00 Started")), IsEmpty());
  EXPECT_THAT(At(2, Ran("2026-06-15 08:00:00 Failed")), SizeIs(1));
  EXPECT_THAT(At(3, Ran("2026-06-15 08:00:00 Failed")), IsEmpty());
}

TEST_F(RunWatcherOfOneTask, KnowsRunsFromBefore) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  EXPECT_THAT(At(0, Ran("2026-06-15 07:00:00 Ok")), IsEmpty());
}

TEST_F(RunWatcherOfOneTask, MeasuresARunFromBeforeByItsDocument) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:59:00 Started"));
  const auto finished = At(500, Ran("2026-06-15 07:59:00 Ok"));
  ASSERT_THAT(finished, ElementsAre(Is(Kind::Finished, 500)));
  EXPECT_EQ(milliseconds(60500), finished[0].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsBothEndsOfARunThatWasOverBeforeAnyoneLooked) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  const auto events = At(700, Ran("2026-06-15 08:00:00 Failed"));
  ASSERT_THAT(events, ElementsAre(Is(Kind::Started, 0), Is(Kind::Finished, 700)));
  EXPECT_EQ("Started", events[0].m_Run.m_State);
  EXPECT_EQ("2026-06-15 08:00:00", events[0].m_Run.m_Start);
  EXPECT_EQ("Failed", events[1].m_Run.m_State);
  EXPECT_EQ(milliseconds(700), events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, NeverTellsANegativeTime) {
  const auto events = At(0, Ran("2026-06-15 08:00:01 Ok"));
  ASSERT_THAT(events, ElementsAre(Is(Kind::Started, 0), Is(Kind::Finished, 0)));
  EXPECT_EQ(milliseconds(0), events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsNoTimeForAStartThatCannotBeRead) {
  const auto events = At(40, Ran("yesterday noon Ok"));
  ASSERT_THAT(events, ElementsAre(Is(Kind::Started, 40), Is(Kind::Finished, 40)));
  EXPECT_FALSE(events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, IgnoresDocumentsWithoutARun) {
  EXPECT_THAT(At(0, "<Task/>"), IsEmpty());
  EXPECT_THAT(At(0, "not XML"), IsEmpty());
  EXPECT_THAT(At(0, Ran("")), IsEmpty());
}

TEST_F(RunWatcherOfOneTask, ForgetsADeletedTask) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  m_Watcher.Forget("T1");
  EXPECT_THAT(At(0, Ran("2026-06-15 07:00:00 Ok")), Not(IsEmpty()));
}

}  // namespace NoxAgentTest
