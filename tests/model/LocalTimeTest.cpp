// mktime as the schedule needs it: the answer depends on the fields and the zone alone.
#include "model/LocalTime.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ALong32.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <ostream>

namespace {

std::optional<std::time_t> shownTime;

}  // namespace

// The linker sends the questions for the time here (--wrap): virtual time stays in 32 bits.
extern "C" {

std::time_t __real_time(std::time_t* result);
std::time_t __wrap_time(std::time_t* result);

std::time_t __wrap_time(std::time_t* result) {
  return shownTime ? *shownTime : __real_time(result);
}

}  // extern "C"

namespace {

using Nox::MakeTime32;

struct Clock {
  int m_Year;
  int m_Month;
  int m_Day;
  int m_Hour;
  int m_Minute;
  int m_IsDst = -1;
};

std::tm FieldsOf(const Clock& clock) {
  std::tm fields{};
  fields.tm_year = clock.m_Year - 1900;
  fields.tm_mon = clock.m_Month - 1;
  fields.tm_mday = clock.m_Day;
  fields.tm_hour = clock.m_Hour;
  fields.tm_min = clock.m_Minute;
  fields.tm_isdst = clock.m_IsDst;
  return fields;
}

std::ostream& operator<<(std::ostream& out, const Clock& clock) {
  return out << clock.m_Year << '-' << clock.m_Month << '-' << clock.m_Day << ' ' << clock.m_Hour
             << ':' << clock.m_Minute;
}

using TestSupport::Berlin;
using TestSupport::LordHowe;
using TestSupport::NewYork;
using TestSupport::SaoPaulo;

TEST(LocalTime, IsWhatTheFieldsAndTheZoneSayWhateverWasAskedBefore) {
  const struct {
    const char* zone;
    Clock clock;
    long moment;
    const char* why;
  } rows[] = {
      {NewYork, {2024, 11, 3, 1, 30}, 1730611800, "shown twice: the first"},
      {NewYork, {2024, 11, 3, 1, 30, 0}, 1730615400, "a given flag decides by itself"},
      {NewYork, {2024, 3, 10, 2, 30}, 1710055800, "never shown: behind the gap"},
      {LordHowe, {2024, 4, 7, 1, 45}, 1712414700, "shown twice, half an hour apart"},
      {LordHowe, {2024, 10, 6, 2, 15}, 1728143100, "never shown, a gap of half an hour"},
      {SaoPaulo, {2018, 10, 21, 0, 0}, 1540090800, "a day that begins at one"},
      {Berlin, {2021, 10, 32, 0, 0}, 1635721200, "the day after a month's last, a change before"},
      {"UTC0", {2038, 1, 19, 3, 14}, 2147483640, "the last minute of the range"},
      {"UTC0", {2038, 1, 19, 3, 15}, -1, "past the range"},
      {"UTC0", {1901, 12, 13, 20, 45}, -1, "before the range"},
  };
  for (const auto& row : rows) {
    const VirtualTime::Zone zone(row.zone);
    for (const int month : {1, 7}) {  // a call in winter and one in summer leave mktime differently
      std::tm earlier = FieldsOf({2024, month, 1, 12, 0});
      (void)std::mktime(&earlier);
      std::tm fields = FieldsOf(row.clock);
      if (row.clock.m_Year == 1901) {
        fields.tm_sec = 51;
      }
      EXPECT_EQ(MakeTime32(fields), row.moment) << row.why << ", after month " << month;
    }
  }
}

TEST(LocalTime, NowEndsWith32BitTime) {
  shownTime = 1109664000;
  EXPECT_EQ(Nox::Now(), 1109664000);
  if constexpr (sizeof(std::time_t) > 4) {
    shownTime = std::time_t{1} << 32;
    EXPECT_EQ(Nox::Now(), 2147483647);
  }
  shownTime.reset();
}

TEST(LocalTime, NormalisesTheFields) {
  const VirtualTime::Zone zone(SaoPaulo);
  std::tm midnight = FieldsOf({2018, 10, 21, 0, 0});
  (void)MakeTime32(midnight);
  EXPECT_EQ(midnight.tm_hour, 1);
  EXPECT_EQ(midnight.tm_wday, 0);
}

// A run's time is written and read by the kit, and its trigger is reckoned here: were the two to
// part, a run could be taken for another start's.
TEST(LocalTime, IsTheKitsOnEveryQuarterOfAnHour) {
  for (const char* name : {NewYork, LordHowe, SaoPaulo, Berlin, "NZST-12NZDT-13,M9.5.0,M4.1.0/3"}) {
    const VirtualTime::Zone zone(name);
    for (int quarter = 0; quarter < 366 * 96; ++quarter) {
      const Clock clock{2024, 1, 1 + quarter / 96, quarter / 4 % 24, quarter % 4 * 15};
      std::tm own = FieldsOf(clock);
      std::tm kit = own;
      ASSERT_EQ(MakeTime32(own), BaseSDK::MakeTime32(kit)) << name << ' ' << clock;
      ASSERT_EQ(own.tm_hour, kit.tm_hour) << name << ' ' << clock;
    }
  }
}

}  // namespace
