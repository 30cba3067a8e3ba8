#include "agent/schedule/LocalCalendar.h"

#include "tests/agent/schedule/RandomSchedule.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <BaseSDK/ALong32.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <ctime>

namespace NoxAgentTest {

using NoxAgent::LocalCalendar;

namespace {

using TestSupport::Day;

class LocalCalendarAgainstLibrary : public testing::TestWithParam<ClockChangeCase> {
 protected:
  LocalCalendarAgainstLibrary()
      : m_Zone(GetParam().m_Zone),
        m_Change(Local(GetParam().m_Change)),
        m_Calendar(m_Change - 400 * Day) {}

  const VirtualTime::Zone m_Zone;
  const long m_Change;
  const LocalCalendar m_Calendar;
};

}  // namespace

TEST_P(LocalCalendarAgainstLibrary, ShowsTheSameDayAndClock) {
  for (long moment = m_Change - 4 * Day; moment < m_Change + 4 * Day; moment += 449) {
    const std::time_t time = moment;
    std::tm fields{};
    localtime_r(&time, &fields);
    const LocalCalendar::Date date = m_Calendar.DateOf(m_Calendar.DayOf(moment));
    ASSERT_EQ(fields.tm_gmtoff, m_Calendar.OffsetAt(moment)) << Show(moment);
    ASSERT_EQ(fields.tm_year + 1900, date.m_Year) << Show(moment);
    ASSERT_EQ(fields.tm_mon, date.m_Month) << Show(moment);
    ASSERT_EQ(fields.tm_mday, date.m_Day) << Show(moment);
    ASSERT_EQ(fields.tm_wday, date.m_Weekday) << Show(moment);
    ASSERT_EQ(fields.tm_hour * 3600 + fields.tm_min * 60 + fields.tm_sec,
              m_Calendar.ClockAt(moment))
        << Show(moment);
  }
}

TEST_P(LocalCalendarAgainstLibrary, FindsTheMomentOfALocalTime) {
  for (long day = m_Calendar.DayOf(m_Change) - 3; day < m_Calendar.DayOf(m_Change) + 3; ++day) {
    for (long clock = 0; clock < Day; clock += 307) {
      const LocalCalendar::Date date = m_Calendar.DateOf(day);
      std::tm fields{};
      fields.tm_year = date.m_Year - 1900;
      fields.tm_mon = date.m_Month;
      fields.tm_mday = date.m_Day;
      fields.tm_sec = static_cast<int>(clock);
      fields.tm_hour = static_cast<int>(clock / 3600);
      fields.tm_min = static_cast<int>(clock / 60 % 60);
      fields.tm_sec = static_cast<int>(clock % 60);
      fields.tm_isdst = -1;
      const long expected = BaseSDK::MakeTime32(fields);
      ASSERT_EQ(expected, m_Calendar.MomentOf(day, clock)) << Show(expected);
    }
  }
}

TEST_P(LocalCalendarAgainstLibrary, KnowsWhatIsShownTwice) {
  for (long moment = m_Change - Day; moment < m_Change + Day; moment += 449) {
    const bool isSecond =
        Local(BaseSDK::ADateTime(moment).ToString("%Y-%m-%d %H:%M:%S").ToUtf8()) != moment;
    ASSERT_EQ(isSecond, m_Calendar.IsShownAgain(moment)) << Show(moment);
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, LocalCalendarAgainstLibrary, testing::ValuesIn(ClockChangeCases()));

TEST(LocalCalendar, LeavesOutTheDayThatApiaLeftOut) {
  const VirtualTime::Zone zone("Pacific/Apia");
  const LocalCalendar calendar(Local("2011-12-01 12:00:00"));
  const long last = calendar.DayOf(Local("2011-12-29 12:00:00"));
  EXPECT_TRUE(calendar.HasDay(last));
  EXPECT_FALSE(calendar.HasDay(last + 1));
  EXPECT_EQ(last + 2, calendar.DayOf(Local("2011-12-31 12:00:00")));
}

TEST(LocalCalendar, ReachesToTheEndOfTime) {
  const VirtualTime::Zone zone("America/New_York");
  const LocalCalendar calendar(Local("2037-12-01 00:00:00"));
  EXPECT_EQ(-5 * 3600, calendar.OffsetAt(LocalCalendar::End()));
  EXPECT_EQ(nullptr, calendar.ChangeAfter(Local("2037-12-01 00:00:00")));
}

}  // namespace NoxAgentTest
