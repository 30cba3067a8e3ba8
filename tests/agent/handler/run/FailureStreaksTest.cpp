#include "agent/handler/run/FailureStreaks.h"

#include "tests/agent/handler/FullDisk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

using Streak = FailureStreaks::Streak;

class FailureStreaksTest : public testing::Test {
 protected:
  // As the agent that starts next has them.
  FailureStreaks Open() const { return FailureStreaks(AString(m_Directory.Path().c_str())); }

  const TestSupport::TempDir m_Directory;
  TestSupport::LogCapture m_Log;
};

}  // namespace

TEST_F(FailureStreaksTest, AreThereAfterARestart) {
  const AString name = AString::FromUtf8("a b;\xC3\xBC");
  auto streaks = Open();
  EXPECT_EQ(streaks.Of("a"), Streak());
  streaks.Note("a", {1, false, 10});
  streaks.Note("a", {2, true, 20});
  streaks.Note(name, {1, false, 30});
  streaks.Save();
  auto after = Open();
  EXPECT_EQ(after.Of("a"), (Streak{2, true, 20}));
  EXPECT_EQ(after.Of(name), (Streak{1, false, 30}));
  EXPECT_EQ(m_Directory.Names(), std::vector<std::string>{"streaks"});
  after.Forget("a");
  EXPECT_EQ(Open().Of("a").m_Failures, 2) << "not saved yet";
  after.Save();
  EXPECT_EQ(Open().Of("a"), Streak());
}

TEST_F(FailureStreaksTest, AreForgottenFirstWhenTheyEndedFirst) {
  auto streaks = Open();
  for (std::size_t i = 0; i <= FailureStreaks::Most; ++i) {
    const long end = i == 500 ? 0 : static_cast<long>(i) + 1;
    streaks.Note(AString(("task" + std::to_string(i)).c_str()), {1, false, end});
  }
  streaks.Save();
  const auto after = Open();
  EXPECT_EQ(after.All().size(), FailureStreaks::Most);
  EXPECT_FALSE(after.All().contains("task500"));
}

TEST_F(FailureStreaksTest, LeaveOutLinesThatCannotBeRead) {
  m_Directory.Write("streaks", "a 1 0 5\n\nb 0 0 5\nc 1 2 5\nd 1 0 x\n..%2Fe 1 0 5\nf 3 1 5");
  const auto streaks = Open();
  EXPECT_EQ(streaks.All().size(), 2u);
  EXPECT_EQ(streaks.Of("a"), (Streak{1, false, 5}));
  EXPECT_EQ(streaks.Of("f"), (Streak{3, true, 5}));
  EXPECT_EQ(m_Log.CountContaining("Leaving out an unreadable line of "), 5u);
}

TEST_F(FailureStreaksTest, KeepTheOldFileOnAFullDiskAndAreWrittenLater) {
  auto streaks = Open();
  streaks.Note("a", {1, false, 5});
  streaks.Save();
  streaks.Note("a", {2, true, 6});
  {
    const FullDisk full(m_Directory.Path());
    streaks.Save();
    EXPECT_EQ(m_Log.CountContaining("No space left on device. A restart of the agent forgets"), 1u);
    EXPECT_EQ(Open().Of("a").m_Failures, 1);
  }
  streaks.Save();
  EXPECT_EQ(Open().Of("a"), (Streak{2, true, 6}));
}

}  // namespace NoxHandlerTest
