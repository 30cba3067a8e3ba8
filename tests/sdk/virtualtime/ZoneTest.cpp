#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

using VirtualTime::Zone;

constexpr std::time_t SummerNoon = 1120219200;  // 2005-07-01 12:00 UTC

int LocalHour() {
  std::tm fields{};
  (void)localtime_r(&SummerNoon, &fields);
  return fields.tm_hour;
}

TEST(Zone, RulesTheLocalTimeWhileItLives) {
  const Zone utc("UTC0");
  EXPECT_EQ(LocalHour(), 12);
  {
    const Zone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(LocalHour(), 14);
    {
      const Zone newYork("EST5EDT,M3.2.0,M11.1.0");
      EXPECT_EQ(LocalHour(), 8);
    }
    EXPECT_EQ(LocalHour(), 14);
  }
  EXPECT_EQ(LocalHour(), 12);
}

TEST(Zone, LeavesTzUnsetWhenItWas) {
  const Zone outer("UTC0");
  (void)unsetenv("TZ");
  {
    const Zone inner("CET-1");
    EXPECT_STREQ(std::getenv("TZ"), "CET-1");
  }
  EXPECT_EQ(std::getenv("TZ"), nullptr);
}

TEST(Zone, VirtualTimeIsBrokenDownByTheSystem) {
  const Zone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
  VirtualTime::VirtualClock::Instance().Start(SummerNoon);
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  (void)localtime_r(&now, &fields);
  EXPECT_EQ(fields.tm_hour, 14);
  EXPECT_EQ(std::mktime(&fields), SummerNoon);
}

}  // namespace
