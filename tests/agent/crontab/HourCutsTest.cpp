#include "agent/crontab/HourCuts.h"

#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::FindHourCuts;
using NoxAgent::LocalCalendar;
using namespace TestSupport;

namespace {

long Cuts(const char* tz, const char* from = "2026-01-01 00:00:00") {
  const VirtualTime::Zone zone(tz);
  const LocalCalendar calendar(Local(from) - Day);
  return FindHourCuts(calendar, Local(from));
}

}  // namespace

TEST(HourCuts, AreWhereTheClocksAreSet) {
  EXPECT_EQ(0, Cuts(Utc));
  EXPECT_EQ(1 << 2 | 1 << 3, Cuts(NewYork));
  EXPECT_EQ(1 << 2 | 1 << 3, Cuts(Berlin));
  EXPECT_EQ(1 << 1 | 1 << 2, Cuts(Dublin));
  EXPECT_EQ(1 << 2 | 1 << 3, Cuts(LordHowe));
  EXPECT_EQ(1 << 0 | 1 << 1, Cuts(SaoPaulo));
}

TEST(HourCuts, AreThoseOfTheYearsToCome) {
  EXPECT_EQ(0, Cuts(NewYork, "2037-12-01 00:00:00"));
}

}  // namespace NoxAgentTest
