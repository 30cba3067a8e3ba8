#include <BaseSDK/ALong32.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using BaseSDK::MakeTime32;

std::tm Fields(int year, int month, int day, int hour, int minute) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_isdst = -1;
  return fields;
}

class MakeTime32Test : public ::testing::Test {
 protected:
  void SetUp() override { UseZone("EST5EDT,M3.2.0,M11.1.0"); }
  void TearDown() override {
    unsetenv("TZ");
    tzset();
  }
  static void UseZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  // What mktime guesses from: a call in winter and one in summer leave it in different states.
  static long After(int monthOfEarlierCall, std::tm fields) {
    std::tm earlier = Fields(2024, monthOfEarlierCall, 1, 12, 0);
    (void)std::mktime(&earlier);
    return MakeTime32(fields);
  }
};

TEST_F(MakeTime32Test, RepeatedTimeIsTheFirstWhateverWasAskedBefore) {
  const std::tm repeated = Fields(2024, 11, 3, 1, 30);
  EXPECT_EQ(After(1, repeated), 1730611800);
  EXPECT_EQ(After(7, repeated), 1730611800);
}

TEST_F(MakeTime32Test, SkippedTimeMovesForwardWhateverWasAskedBefore) {
  const std::tm skipped = Fields(2024, 3, 10, 2, 30);
  EXPECT_EQ(After(1, skipped), 1710055800);
  EXPECT_EQ(After(7, skipped), 1710055800);
}

TEST_F(MakeTime32Test, HalfHourShiftKeepsTheSameRule) {
  UseZone("<+1030>-10:30<+11>-11,M10.1.0,M4.1.0");
  // 2024-04-07 01:45 is shown at +11 first, half an hour later at +10:30 again.
  EXPECT_EQ(After(1, Fields(2024, 4, 7, 1, 45)), 1712414700);
  EXPECT_EQ(After(7, Fields(2024, 4, 7, 1, 45)), 1712414700);
  // 2024-10-06 02:15 is skipped: 02:15 at +10:30 is shown as 02:45 at +11.
  EXPECT_EQ(After(1, Fields(2024, 10, 6, 2, 15)), 1728143100);
  EXPECT_EQ(After(7, Fields(2024, 10, 6, 2, 15)), 1728143100);
}

TEST_F(MakeTime32Test, SkippedMidnightStartsTheDayAtOne) {
  UseZone("<-03>3<-02>,M10.3.0/0,M2.3.0/0");
  std::tm midnight = Fields(2018, 10, 21, 0, 0);
  EXPECT_EQ(MakeTime32(midnight), 1540090800);
  EXPECT_EQ(midnight.tm_hour, 1);
}

TEST_F(MakeTime32Test, DayPastTheMonthsEndAfterAChangeOfTheClocksIsMidnightOfTheNext) {
  UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
  std::tm midnight = Fields(2021, 10, 32, 0, 0);  // the clocks changed on the 31st
  EXPECT_EQ(MakeTime32(midnight), 1635721200);
  EXPECT_EQ(midnight.tm_mday, 1);
  EXPECT_EQ(midnight.tm_hour, 0);
}

TEST_F(MakeTime32Test, GivenDaylightFlagDecidesByItself) {
  std::tm second = Fields(2024, 11, 3, 1, 30);
  second.tm_isdst = 0;
  EXPECT_EQ(MakeTime32(second), 1730615400);
}

TEST_F(MakeTime32Test, MomentOutsideThe32BitRangeIsAFailure) {
  UseZone("UTC0");
  std::tm last = Fields(2038, 1, 19, 3, 14);
  last.tm_sec = 7;
  EXPECT_EQ(MakeTime32(last), 2147483647);
  std::tm beyond = Fields(2038, 1, 19, 3, 15);
  EXPECT_EQ(MakeTime32(beyond), -1);
}

}  // namespace
