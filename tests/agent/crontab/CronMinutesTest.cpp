#include "agent/crontab/CronMinutes.h"

#include "tests/agent/crontab/Crontabs.h"
#include "tests/agent/crontab/PlainCron.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::CronMinutes;
using NoxAgent::LocalCalendar;
using namespace TestSupport;

namespace {

std::vector<long> MinutesOf(const std::string& expression, long from, long until) {
  const LocalCalendar calendar(from - Day);
  CronMinutes minutes(Expression(expression), calendar, from, until);
  std::vector<long> moments;
  while (const auto moment = minutes.Next()) {
    moments.push_back(*moment);
  }
  return moments;
}

}  // namespace

TEST(CronMinutes, AreThoseThatTheWallClockShows) {
  for (const char* const tz : {Utc, NewYork, LordHowe, SaoPaulo, "Pacific/Apia"}) {
    const VirtualTime::Zone zone(tz);
    const long from = Local("2011-09-05 10:07:23");
    const long until = Local("2012-05-01 00:00:00");
    const HalfHours span(from, until);
    for (const char* const expression :
         {"* * * * *", "*/10 * * * *", "30 0,1,2,3,23 * * *", "0 0 30,31 * *", "15 2 * * sun"}) {
      EXPECT_EQ(PlainCronMinutes(expression, span), MinutesOf(expression, from, until))
          << expression << " in " << tz;
    }
  }
}

TEST(CronMinutes, IncludeBothEndsOfTheSpan) {
  const VirtualTime::Zone zone(Utc);
  const long from = Local("2026-03-02 08:00:00");
  EXPECT_EQ((std::vector<long>{from, from + Hour}), MinutesOf("0 * * * *", from, from + Hour));
  EXPECT_EQ((std::vector<long>{from}), MinutesOf("0 * * * *", from, from + Hour - 1));
  EXPECT_EQ((std::vector<long>{from + Hour}), MinutesOf("0 * * * *", from + 1, from + Hour));
  EXPECT_TRUE(MinutesOf("0 * * * *", from, from - 1).empty());
}

TEST(CronMinutes, EndWithTheCalendar) {
  const VirtualTime::Zone zone(NewYork);
  const auto moments = MinutesOf("0 0 * * *", LocalCalendar::End() - 3 * Day, 2147483647L);
  ASSERT_EQ(3U, moments.size());
  EXPECT_LE(moments.back(), LocalCalendar::End());
}

TEST(CronMinutes, OfADayThatNoMonthHasAreNone) {
  const VirtualTime::Zone zone(Berlin);
  EXPECT_TRUE(
      MinutesOf("0 0 30 2 *", Local("2026-01-01 00:00:00"), Local("2036-01-01 00:00:00")).empty());
}

}  // namespace NoxAgentTest
