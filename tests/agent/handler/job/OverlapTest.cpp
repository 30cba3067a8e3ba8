#include "agent/handler/job/Overlap.h"

#include <gtest/gtest.h>

TEST(Overlap, KnowsItsThreeWords) {
  EXPECT_EQ(ParseOverlap("skip"), EOverlap::Skip);
  EXPECT_EQ(ParseOverlap("queue"), EOverlap::Queue);
  EXPECT_EQ(ParseOverlap("kill"), EOverlap::Kill);
  EXPECT_EQ(ParseOverlap(""), std::nullopt);
  EXPECT_EQ(ParseOverlap("Kill"), std::nullopt);
}

TEST(Overlap, IsTheJobsChoiceForARepetition) {
  for (const EOverlap wanted : {EOverlap::Skip, EOverlap::Queue, EOverlap::Kill}) {
    EXPECT_EQ(DecideOverlap(wanted, false), wanted);
  }
}

TEST(Overlap, TakesANeverRunDispatchOfARunningTaskForTheReloadsEcho) {
  for (const EOverlap wanted : {EOverlap::Skip, EOverlap::Queue, EOverlap::Kill}) {
    EXPECT_EQ(DecideOverlap(wanted, true), EOverlap::Skip);
  }
}
