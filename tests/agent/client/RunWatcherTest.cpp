#include "agent/client/RunWatcher.h"

#include "tests/support/Texts.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::RunEvent;
using NoxAgent::RunWatcher;
using NoxAgent::TaskGlance;
using std::chrono::milliseconds;
using TestSupport::Texts;
using Kind = RunEvent::Kind;

namespace {

// 2026-06-15 08:00:00 in UTC.
constexpr RunWatcher::Clock::time_point Eight{std::chrono::seconds(1781510400)};

std::string Seen(Kind kind, std::chrono::nanoseconds pastEight) {
  const char* const names[] = {"started", "finished", "added", "deleted"};
  return names[static_cast<int>(kind)] + (" " + std::to_string(pastEight.count()));
}

Texts Seen(const std::vector<RunEvent>& events) {
  Texts texts;
  for (const RunEvent& event : events) {
    texts.push_back(Seen(event.m_Kind, event.m_Time - Eight));
  }
  return texts;
}

TaskGlance Ran(const char* runTime) {
  return {true, runTime};
}

class RunWatcherOfOneTask : public testing::Test {
 protected:
  std::vector<RunEvent> At(long millisecondsPastEight, const TaskGlance& document) {
    return m_Watcher.Changed("T1", document, Eight + milliseconds(millisecondsPastEight));
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  RunWatcher m_Watcher;
};

}  // namespace

TEST_F(RunWatcherOfOneTask, MeasuresFromTheMomentTheStartWasSeen) {
  EXPECT_EQ(Seen(At(40, Ran("2026-06-15 08:00:00 Started"))),
            Texts{Seen(Kind::Started, milliseconds(40))});
  const auto finished = At(2540, Ran("2026-06-15 08:00:00 Ok"));
  ASSERT_EQ(Seen(finished), Texts{Seen(Kind::Finished, milliseconds(2540))});
  EXPECT_EQ(milliseconds(2500), finished[0].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsAChangeOnce) {
  EXPECT_EQ(At(0, Ran("2026-06-15 08:00:00 Started")).size(), 1U);
  EXPECT_EQ(Seen(At(1, Ran("2026-06-15 08:00:00 Started"))), Texts());
  EXPECT_EQ(At(2, Ran("2026-06-15 08:00:00 Failed")).size(), 1U);
  EXPECT_EQ(Seen(At(3, Ran("2026-06-15 08:00:00 Failed"))), Texts());
}

TEST_F(RunWatcherOfOneTask, KnowsRunsFromBefore) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  EXPECT_EQ(Seen(At(0, Ran("2026-06-15 07:00:00 Ok"))), Texts());
}

TEST_F(RunWatcherOfOneTask, MeasuresARunFromBeforeByItsDocument) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:59:00 Started"));
  const auto finished = At(500, Ran("2026-06-15 07:59:00 Ok"));
  ASSERT_EQ(Seen(finished), Texts{Seen(Kind::Finished, milliseconds(500))});
  EXPECT_EQ(milliseconds(60500), finished[0].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsBothEndsOfARunThatWasOverBeforeAnyoneLooked) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  const auto events = At(700, Ran("2026-06-15 08:00:00 Failed"));
  ASSERT_EQ(Seen(events),
            (Texts{Seen(Kind::Started, milliseconds(0)), Seen(Kind::Finished, milliseconds(700))}));
  EXPECT_EQ("Started", events[0].m_Run.m_State);
  EXPECT_EQ("2026-06-15 08:00:00", events[0].m_Run.m_Start);
  EXPECT_EQ("Failed", events[1].m_Run.m_State);
  EXPECT_EQ(milliseconds(700), events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, NeverTellsANegativeTime) {
  const auto events = At(0, Ran("2026-06-15 08:00:01 Ok"));
  ASSERT_EQ(Seen(events),
            (Texts{Seen(Kind::Started, milliseconds(0)), Seen(Kind::Finished, milliseconds(0))}));
  EXPECT_EQ(milliseconds(0), events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, TellsNoTimeForAStartThatCannotBeRead) {
  const auto events = At(40, Ran("yesterday noon Ok"));
  ASSERT_EQ(Seen(events),
            (Texts{Seen(Kind::Started, milliseconds(40)), Seen(Kind::Finished, milliseconds(40))}));
  EXPECT_FALSE(events[1].m_Took);
}

TEST_F(RunWatcherOfOneTask, IgnoresDocumentsWithoutARun) {
  EXPECT_EQ(Seen(At(0, {})), Texts());
  EXPECT_EQ(Seen(At(0, Ran(""))), Texts());
}

TEST_F(RunWatcherOfOneTask, ForgetsADeletedTask) {
  m_Watcher.Know("T1", Ran("2026-06-15 07:00:00 Ok"));
  m_Watcher.Forget("T1");
  EXPECT_NE(Seen(At(0, Ran("2026-06-15 07:00:00 Ok"))), Texts());
}

}  // namespace NoxAgentTest
