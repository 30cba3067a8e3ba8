// The zone in memory: what the clock shows, and when it shows it.
#include "model/LocalZone.h"

#include "tests/model/TriggerTable.h"

#include <BaseSDK/ALong32.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <ostream>
#include <string>

namespace Nox {

// NOLINTNEXTLINE(misc-use-internal-linkage): found by its argument's namespace
void PrintTo(const LocalTime& local, std::ostream* out) {
  *out << "day " << local.m_Day << " second " << local.m_Second;
}

}  // namespace Nox

namespace {

using Nox::LocalTime;
using Nox::LocalZone;
using TestSupport::Berlin;

struct ShownClock {
  int m_Year;
  int m_Month;
  int m_Day;
  int m_Hour;
  int m_Minute;
  int m_Second = 0;
};

LocalTime LocalOf(const ShownClock& clock) {
  namespace chrono = std::chrono;
  const chrono::local_days month{chrono::year(clock.m_Year) /
                                 chrono::month(static_cast<unsigned>(clock.m_Month)) /
                                 chrono::day(1)};
  return {static_cast<long>(month.time_since_epoch().count()) + clock.m_Day - 1,
          clock.m_Hour * 3600L + clock.m_Minute * 60L + clock.m_Second};
}

std::ostream& operator<<(std::ostream& out, const ShownClock& clock) {
  return out << clock.m_Year << '-' << clock.m_Month << '-' << clock.m_Day << ' ' << clock.m_Hour
             << ':' << clock.m_Minute << ':' << clock.m_Second;
}

TEST(LocalZone, ALocalTimeHasOneMomentWhereverTheClockChanges) {
  const struct {
    const char* zone;
    ShownClock clock;
    long moment;
    const char* why;
  } rows[] = {
      {NewYork, {2024, 11, 3, 1, 30}, 1730611800, "shown twice: the first"},
      {NewYork, {2024, 3, 10, 2, 30}, 1710055800, "never shown: behind the gap"},
      {LordHowe, {2024, 4, 7, 1, 45}, 1712414700, "shown twice, half an hour apart"},
      {LordHowe, {2024, 10, 6, 2, 15}, 1728143100, "never shown, a gap of half an hour"},
      {SaoPaulo, {2018, 10, 21, 0, 0}, 1540090800, "a day that begins at one"},
      {Berlin, {2021, 10, 32, 0, 0}, 1635721200, "the day after a change"},
      {"Pacific/Apia", {2011, 12, 30, 8, 0}, 1325268000, "a day left out: the next day"},
      {"Pacific/Kwajalein", {1993, 8, 21, 8, 0}, 745963200, "a day left out: the next day"},
      {"Pacific/Kwajalein", {1969, 9, 30, 8, 0}, -8046000, "almost a day shown twice: the first"},
      {Utc, {2038, 1, 19, 3, 14, 7}, 2147483647, "the last second of the range"},
      {Utc, {2038, 1, 19, 3, 14, 8}, -1, "past the range"},
      {Utc, {1901, 12, 13, 20, 45, 52}, -2147483647 - 1, "the first second of the range"},
      {Utc, {1901, 12, 13, 20, 45, 51}, -1, "before the range"},
  };
  for (const auto& row : rows) {
    const VirtualTime::Zone zone(row.zone);
    EXPECT_EQ(LocalZone().MomentOf(LocalOf(row.clock)), row.moment) << row.clock << ": " << row.why;
  }
}

TEST(LocalZone, ShowsTheDayBeforeAndAfterTheEndsOfTheRange) {
  constexpr long First = -2147483647 - 1, Last = 2147483647;
  const struct {
    const char* zone;
    long moment;
    ShownClock shown;
  } rows[] = {
      {"<-14>14", First, {1901, 12, 13, 6, 45, 52}},
      {"<+14>-14", First, {1901, 12, 14, 10, 45, 52}},
      {"<-14>14", Last, {2038, 1, 18, 13, 14, 7}},
      {"<+14>-14", Last, {2038, 1, 19, 17, 14, 7}},
      {Utc, -1, {1969, 12, 31, 23, 59, 59}},
      {Utc, 0, {1970, 1, 1, 0, 0, 0}},
  };
  for (const auto& row : rows) {
    const VirtualTime::Zone zone(row.zone);
    const LocalTime shown = LocalZone().LocalTimeAt(row.moment), wanted = LocalOf(row.shown);
    EXPECT_EQ(shown.m_Day, wanted.m_Day) << row.zone << ' ' << row.moment;
    EXPECT_EQ(shown.m_Second, wanted.m_Second) << row.zone << ' ' << row.moment;
  }
}

TEST(LocalZone, FindsMomentsUpToTheEndsOfTheRangeAndNoneBeyond) {
  constexpr long Hour = 3600, LastDay = 24855;
  const struct {
    const char* zone;
    long offset;
  } rows[] = {{"<-14>14", -14 * Hour}, {Utc, 0}, {"<+14>-14", 14 * Hour}};
  for (const auto& row : rows) {
    const VirtualTime::Zone zone(row.zone);
    const LocalZone asked;
    for (long beforeEnd = -2; beforeEnd < 12; ++beforeEnd) {
      for (const long day : {LastDay - beforeEnd, beforeEnd - LastDay - 1}) {
        for (const long second : {0L, 11646L, 11647L, 11648L, 74751L, 74752L, 74753L, 86399L}) {
          const std::int64_t moment = std::int64_t{day} * Nox::SecondsPerDay + second - row.offset;
          const bool isIn = moment >= Nox::Long32Min && moment <= Nox::Long32Max;
          EXPECT_EQ(asked.MomentOf({day, second}), isIn ? moment : -1)
              << row.zone << " day " << day << " second " << second;
        }
      }
    }
  }
}

TEST(LocalZone, IsSteadyBetweenTwoChangesOfTheClock) {
  const VirtualTime::Zone zone(NewYork);
  constexpr long Spring = 1710054000, Autumn = 1730613600;  // 2024-03-10 03:00, 2024-11-03 01:00
  const LocalZone asked;
  EXPECT_TRUE(asked.IsSteady(Spring, Autumn - 1));
  EXPECT_FALSE(asked.IsSteady(Spring - 1, Spring));
  EXPECT_FALSE(asked.IsSteady(Autumn - 1, Autumn));
}

TEST(LocalZone, TellsHowFarItsChangesMoveADay) {
  const auto drift = [](const char* name) {
    const VirtualTime::Zone zone(name);
    return LocalZone().MostDrift();
  };
  EXPECT_EQ(drift(Utc), 1) << "a moment may be close to midnight";
  EXPECT_EQ(drift(NewYork), 1);
  EXPECT_EQ(drift("Pacific/Apia"), 2) << "from 11:30 behind UTC to 14:00 before it";
}

TEST(LocalZone, AChangedVariableCountsFromTheNextLookOn) {
  constexpr long Noon = 1109678400;  // 2005-03-01 12:00 UTC
  const auto shown = [] { return LocalZone::InForce().LocalTimeAt(Noon).m_Second / 3600; };
  const VirtualTime::Zone zone(Utc);
  LocalZone::Refresh();
  const VirtualTime::Zone other(NewYork);
  EXPECT_EQ(shown(), 12);
  LocalZone::Refresh();
  EXPECT_EQ(shown(), 7);
}

TEST(LocalZone, WithoutVariableItIsTheMachines) {
  const VirtualTime::Zone zone(NewYork);
  LocalZone::Refresh();
  ASSERT_EQ(unsetenv("TZ"), 0);
  LocalZone::Refresh();
  const bool isMachines = LocalZone::InForce() == LocalZone();
  const VirtualTime::Zone named(":/etc/localtime");
  EXPECT_TRUE(isMachines);
  EXPECT_EQ(LocalZone::InForce(), LocalZone());
}

// A zone is kept for those who still ask it. The one that comes back is not kept twice.
TEST(LocalZone, AZoneThatComesBackIsTheSameObject) {
  const VirtualTime::Zone zone(Berlin);
  LocalZone::Refresh();
  const LocalZone* const first = &LocalZone::InForce();
  {
    const VirtualTime::Zone other(NewYork);
    LocalZone::Refresh();
    EXPECT_NE(first, &LocalZone::InForce());
    EXPECT_EQ(first->LocalTimeAt(0).m_Second, 3600);
  }
  LocalZone::Refresh();
  EXPECT_EQ(first, &LocalZone::InForce());
}

// A run's time is written and read by the kit, and its trigger is reckoned here: were the two to
// part, a run could be taken for another start's.
TEST(LocalZone, IsTheKitsOnEveryQuarterOfAnHour) {
  for (const char* name : {NewYork, LordHowe, SaoPaulo, Berlin, "NZST-12NZDT-13,M9.5.0,M4.1.0/3"}) {
    const VirtualTime::Zone zone(name);
    const LocalZone asked;
    for (int quarter = 0; quarter < 366 * 96; ++quarter) {
      const ShownClock clock{2024, 1, 1 + quarter / 96, quarter / 4 % 24, quarter % 4 * 15};
      std::tm kit{};
      kit.tm_year = clock.m_Year - 1900;
      kit.tm_mon = clock.m_Month - 1;
      kit.tm_mday = clock.m_Day;
      kit.tm_hour = clock.m_Hour;
      kit.tm_min = clock.m_Minute;
      kit.tm_isdst = -1;
      ASSERT_EQ(asked.MomentOf(LocalOf(clock)), BaseSDK::MakeTime32(kit)) << name << ' ' << clock;
    }
  }
}

}  // namespace
