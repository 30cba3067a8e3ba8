#include "agent/client/LocalTime.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::DurationText;
using NoxAgent::LocalTimeText;
using std::chrono::milliseconds;

TEST(LocalTime, TellsTheTwoHoursOfAnAutumnNightApart) {
  const VirtualTime::Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ("2026-10-25 02:30:00 +0200", LocalTimeText(1792888200));
  EXPECT_EQ("2026-10-25 02:30:00 +0100", LocalTimeText(1792891800));
}

TEST(LocalTime, ShowsHalfHoursOfOffset) {
  const VirtualTime::Zone zone("<-0930>9:30");
  EXPECT_EQ("2026-06-15 02:30:00 -0930", LocalTimeText(1781524800));
}

TEST(DurationText, ShowsTheTwoLargestUnits) {
  EXPECT_EQ("0.0 s", DurationText(milliseconds(49)));
  EXPECT_EQ("0.9 s", DurationText(milliseconds(999)));
  EXPECT_EQ("9.9 s", DurationText(milliseconds(9999)));
  EXPECT_EQ("10 s", DurationText(milliseconds(10000)));
  EXPECT_EQ("59 s", DurationText(milliseconds(59999)));
  EXPECT_EQ("1 min", DurationText(milliseconds(60000)));
  EXPECT_EQ("3 min 5 s", DurationText(milliseconds(185000)));
  EXPECT_EQ("2 h 10 min", DurationText(milliseconds(7859000)));
  EXPECT_EQ("3 d 4 h", DurationText(std::chrono::hours(76)));
}

}  // namespace NoxAgentTest
