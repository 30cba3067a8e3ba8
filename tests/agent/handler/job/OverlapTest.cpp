#include "agent/handler/job/Overlap.h"

#include <gtest/gtest.h>

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(Overlap, KnowsItsFourWords) {
  EXPECT_EQ(ParseOverlap("skip"), OverlapRule::Skip);
  EXPECT_EQ(ParseOverlap("queue"), OverlapRule::Queue);
  EXPECT_EQ(ParseOverlap("kill"), OverlapRule::Kill);
  EXPECT_EQ(ParseOverlap("allow"), OverlapRule::Allow);
  EXPECT_EQ(ParseOverlap(""), std::nullopt);
  EXPECT_EQ(ParseOverlap("Kill"), std::nullopt);
}

TEST(Overlap, IsTheJobsChoiceForARepetition) {
  for (const OverlapRule wanted :
       {OverlapRule::Skip, OverlapRule::Queue, OverlapRule::Kill, OverlapRule::Allow}) {
    EXPECT_EQ(DecideOverlap(wanted, false), wanted);
  }
}

TEST(Overlap, TakesANeverRunDispatchOfARunningTaskForTheReloadsEcho) {
  for (const OverlapRule wanted :
       {OverlapRule::Skip, OverlapRule::Queue, OverlapRule::Kill, OverlapRule::Allow}) {
    EXPECT_EQ(DecideOverlap(wanted, true), OverlapRule::Skip);
  }
}

}  // namespace NoxHandlerTest
