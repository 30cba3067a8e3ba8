#include "agent/crontab/DayRuns.h"

#include "tests/agent/crontab/Crontabs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace NoxAgentTest {

using NoxAgent::CronExpression;
using NoxAgent::DayRun;
using NoxAgent::DivideDay;

namespace {

constexpr long MinutesOfADay = 1440;

// "08:00", "08:00/10-50": every 10 minutes for 50 minutes.
std::string Written(const DayRun& run) {
  const auto twoDigits = [](long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  std::string text = twoDigits(run.m_Clock / 3600) + ":" + twoDigits(run.m_Clock / 60 % 60);
  if (run.m_Interval != 0) {
    text += "/" + std::to_string(run.m_Interval / 60) + "-" + std::to_string(run.m_Duration / 60);
  }
  return text;
}

std::string Divided(const std::string& times, long cuts) {
  const CronExpression expression = Expression(times + " * * *");
  std::string text;
  for (const DayRun& run : DivideDay(expression.Minutes(), expression.Hours(), cuts)) {
    text += (text.empty() ? "" : " ") + Written(run);
  }
  return text;
}

// How often each minute of the day has a run; one behind it makes the test fail.
std::vector<int> RunsOfMinutes(const std::vector<DayRun>& runs) {
  std::vector<int> count(MinutesOfADay);
  for (const DayRun& run : runs) {
    for (long clock = run.m_Clock;; clock += run.m_Interval) {
      ++count.at(static_cast<std::size_t>(clock / 60));
      if (run.m_Interval == 0 || clock >= run.m_Clock + run.m_Duration) {
        EXPECT_EQ(run.m_Clock + run.m_Duration, clock) << Written(run);
        break;
      }
    }
  }
  return count;
}

}  // namespace

TEST(DayRuns, AreFewWhereTheClocksStay) {
  EXPECT_EQ("03:30", Divided("30 3", 0));
  EXPECT_EQ("00:00/10-1430", Divided("*/10 *", 0));
  EXPECT_EQ("00:00/1-1439", Divided("* *", 0));
  EXPECT_EQ("00:05/10-1430", Divided("5-59/10 *", 0));
  EXPECT_EQ("08:00/10-590", Divided("*/10 8-17", 0));
  EXPECT_EQ("00:00/120-1320", Divided("0 */2", 0));
  EXPECT_EQ("00:15/60-1380", Divided("15 *", 0));
  EXPECT_EQ("00:00/60-360 22:00/60-60", Divided("0 22-23,0-6", 0));
  EXPECT_EQ("00:00/60-1380 00:05/60-1380 00:10/60-1380 00:30/60-1380", Divided("0,5,10,30 *", 0));
  EXPECT_EQ("08:00/5-10 08:30", Divided("0,5,10,30 8", 0));
  EXPECT_EQ("08:00/7-56 17:00/7-56", Divided("*/7 8,17", 0));
}

TEST(DayRuns, EndWhereTheClocksChange) {
  constexpr long TwoAndThree = 1 << 2 | 1 << 3;
  EXPECT_EQ("03:30", Divided("30 3", TwoAndThree));
  EXPECT_EQ("00:00/10-110 02:00/10-50 03:00/10-1250", Divided("*/10 *", TwoAndThree));
  EXPECT_EQ("00:00/60-60 02:00 03:00/60-1200", Divided("0 *", TwoAndThree));
  EXPECT_EQ("08:00/10-110", Divided("*/10 8-9", TwoAndThree));
  EXPECT_EQ("00:00 02:00 04:00/120-1080", Divided("0 */2", TwoAndThree));
  EXPECT_EQ("01:00 02:00", Divided("0 1-2", TwoAndThree));
  EXPECT_EQ("01:00/60-60", Divided("0 1-2", 1 << 1));
}

TEST(DayRuns, HaveEachMinuteOnce) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 200; ++round) {
    std::uint64_t minutes = random() >> 4;
    for (int thin = 0; thin < round % 5; ++thin) {
      minutes &= random();
    }
    const long hours = static_cast<long>((random() & random()) >> 40);
    std::vector<int> expected;
    expected.reserve(MinutesOfADay);
    for (int minute = 0; minute < MinutesOfADay; ++minute) {
      expected.push_back(
          static_cast<int>((minutes >> minute % 60 & 1) != 0 && (hours >> minute / 60 & 1) != 0));
    }
    for (const long cuts : {0L, 0xCL, 0xFFFFFFL}) {
      ASSERT_EQ(expected, RunsOfMinutes(DivideDay(minutes, hours, cuts)))
          << "minutes " << minutes << " hours " << hours << " cuts " << cuts;
    }
  }
}

}  // namespace NoxAgentTest
