#include "agent/handler/run/FinalFailures.h"

#include "tests/agent/handler/FullDisk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class FinalFailuresTest : public testing::Test {
 protected:
  // As the agent that starts next has them.
  FinalFailures Open() const { return FinalFailures(AString(m_Directory.Path().c_str())); }

  const TestSupport::TempDir m_Directory;
  TestSupport::LogCapture m_Log;
};

}  // namespace

TEST_F(FinalFailuresTest, AreThereAfterARestart) {
  const FinalFailures::Failure odd{100, 130, "cannot run \"x\ny\": 50% of \xC3\xA9"};
  const AString name = AString::FromUtf8("a b;\xC3\xBC");
  auto failures = Open();
  EXPECT_TRUE(failures.All().empty());
  failures.Note("a", {1, 2, "first"});
  failures.Note("a", {3, 4, "second"});
  failures.Note(name, odd);
  failures.Save();
  const auto after = Open();
  EXPECT_EQ(after.All().size(), 2u);
  EXPECT_EQ(after.All().at("a"), (FinalFailures::Failure{3, 4, "second"}));
  EXPECT_EQ(after.All().at(name), odd);
  EXPECT_EQ(m_Directory.Names(), std::vector<std::string>{"failures"});
}

TEST_F(FinalFailuresTest, AreWrittenOnlyWhenTheyAreSaved) {
  auto failures = Open();
  failures.Forget("a");
  failures.Save();
  EXPECT_FALSE(m_Directory.Has("failures")) << "there is nothing to write";
  failures.Note("a", {1, 2, "x"});
  EXPECT_TRUE(Open().All().empty());
  failures.Save();
  failures.Forget("a");
  EXPECT_EQ(Open().All().size(), 1u);
  failures.Save();
  EXPECT_TRUE(Open().All().empty());
}

TEST_F(FinalFailuresTest, ForgetThoseThatEndedFirstWhenThereAreTooMany) {
  auto failures = Open();
  const AString words(std::string(2 * FinalFailures::MaxReason, 'x').c_str());
  for (std::size_t i = 0; i <= FinalFailures::Most; ++i) {
    const long end = i == 500 ? 0 : static_cast<long>(i) + 1;
    failures.Note(AString(("task" + std::to_string(i)).c_str()), {end, end, words});
  }
  failures.Save();
  const auto after = Open();
  EXPECT_EQ(after.All().size(), FinalFailures::Most);
  EXPECT_FALSE(after.All().contains("task500"));
  EXPECT_EQ(after.All().at("task0").m_Reason.Length(), FinalFailures::MaxReason);
}

TEST_F(FinalFailuresTest, LeaveOutLinesThatCannotBeRead) {
  m_Directory.Write("failures", "a 1 2 x\n\nb x 2 x\nc 3 4\n..%2Fd 5 6 x\ne 7 8 y");
  const auto failures = Open();
  EXPECT_EQ(failures.All().size(), 2u);
  EXPECT_TRUE(failures.All().contains("a") && failures.All().contains("e"));
  EXPECT_EQ(m_Log.CountContaining("Leaving out an unreadable line of "), 4u);
}

TEST_F(FinalFailuresTest, KeepTheOldFileOnAFullDiskAndAreWrittenLater) {
  auto failures = Open();
  failures.Note("a", {1, 2, "x"});
  failures.Save();
  failures.Note("b", {3, 4, "y"});
  {
    const FullDisk full(m_Directory.Path());
    failures.Save();
    EXPECT_EQ(m_Log.CountContaining("No space left on device. A restart of the agent forgets"), 1u);
    EXPECT_EQ(Open().All().size(), 1u);
  }
  failures.Save();
  EXPECT_EQ(Open().All().size(), 2u);
}

}  // namespace NoxHandlerTest
