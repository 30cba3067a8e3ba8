#include "agent/phrase/PhraseTriggers.h"

#include "agent/phrase/PhraseReader.h"
#include "agent/phrase/PhraseValues.h"
#include "tests/agent/phrase/RandomPhrase.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace NoxAgentTest {

using NoxAgent::LocalCalendar;
using NoxAgent::PhraseError;
using NoxAgent::TriggerRule;
using TestSupport::Day;

namespace {

constexpr const char* Monday = "2026-11-23 12:03:00";

class PhraseTriggers : public testing::Test {
 protected:
  explicit PhraseTriggers(const char* zone = TestSupport::NewYork)
      : m_Zone(zone), m_Calendar(Local(Monday) - 366 * Day) {}

  std::vector<TriggerRule> Make(const std::string& words) const {
    const long now = Local(Monday);
    return MakeTriggers(NoxAgent::ReadPhrase({words}, m_Calendar, now), m_Calendar, now);
  }

  /// Those after `from` of a task that is added at Monday.
  std::vector<long> RunsBetween(const std::string& words, long from, long until) const {
    auto runs = RunsOf(Make(words), m_Calendar, Local(Monday), until);
    std::erase_if(runs, [from](long run) { return run <= from; });
    return runs;
  }

  /// The first runs after a moment.
  std::string Runs(const std::string& words, std::size_t count,
                   const std::string& from = Monday) const {
    const auto runs = RunsBetween(words, Local(from), Local(from) + 1600 * Day);
    std::string text;
    for (std::size_t i = 0; i < std::min(count, runs.size()); ++i) {
      text += Show(runs[i]).substr(0, 16) + "\n";
    }
    return text;
  }

  std::string ErrorOf(const std::string& words) const {
    try {
      return "no error: " + std::to_string(Make(words).size());
    } catch (const PhraseError& error) {
      return error.what();
    }
  }

  VirtualTime::Zone m_Zone;
  LocalCalendar m_Calendar;
};

struct PhraseTriggersInUtc : PhraseTriggers {
  PhraseTriggersInUtc() : PhraseTriggers(TestSupport::Utc) {}
};

}  // namespace

TEST_F(PhraseTriggers, BeginAtTheNextStart) {
  const auto triggers = Make("daily at 02:30,18:00");
  ASSERT_EQ(2U, triggers.size());
  EXPECT_EQ(Local("2026-11-24 02:30:00"), triggers[0].m_Begin);
  EXPECT_EQ(Local("2026-11-23 18:00:00"), triggers[1].m_Begin);
}

TEST_F(PhraseTriggers, DoNotBeginOnADayThatLacksTheTimeButRunOnIt) {
  EXPECT_EQ("2027-03-14 03:30\n2027-03-15 02:30\n2027-03-16 02:30\n",
            Runs("daily at 02:30 from 2027-03-14", 3));
  EXPECT_EQ("2027-03-14 03:30\n2027-03-16 02:30\n",
            Runs("every 2 days at 02:30 from 2027-03-14", 2));
}

TEST_F(PhraseTriggers, GoOnWithARepetitionThatIsUnderWay) {
  EXPECT_EQ("2026-11-23 12:10\n2026-11-23 12:20\n2026-11-23 12:30\n2026-11-24 08:00\n",
            Runs("every 10 min from 08:00 until 12:30 on weekdays", 4));
}

TEST_F(PhraseTriggers, RepeatAllDayOverChangesOfTheClocks) {
  // Days of 25 and of 23 hours.
  for (const char* const day : {"2027-11-07 00:00:00", "2027-03-14 00:00:00"}) {
    const long begin = Local(day);
    const auto runs = RunsBetween("every 10 min", begin - 60, begin + Day);
    for (long moment = begin; moment <= begin + Day; moment += 600) {
      EXPECT_EQ(1, std::count(runs.begin(), runs.end(), moment)) << Show(moment);
    }
  }
}

TEST_F(PhraseTriggers, RepeatEverySomeHoursByTheClock) {
  EXPECT_EQ(12U, Make("every 2 h").size());
  EXPECT_EQ("2027-03-14 00:00\n2027-03-14 03:00\n2027-03-14 04:00\n",
            Runs("every 2 h", 3, "2027-03-13 23:00:00"));
}

TEST_F(PhraseTriggersInUtc, NeedOneTriggerForAllOfADay) {
  EXPECT_EQ(2U, Make("every 10 min").size()) << "the day, and what is left of today";
  EXPECT_EQ(2U, Make("every 2 h").size());
}

TEST_F(PhraseTriggersInUtc, RepeatEverySomeSecondsUntilMidnight) {
  const auto runs =
      RunsBetween("every 30 s", Local("2026-11-24 23:58:10"), Local("2026-11-25 00:00:59"));
  EXPECT_EQ(5U, runs.size());
}

TEST_F(PhraseTriggers, CountDaysByTheCalendarOverChangesOfTheClocks) {
  // Counted from winter, the scheduler's own arithmetic is a day off in summer.
  EXPECT_EQ("2027-03-13 08:00\n2027-03-15 08:00\n2027-03-17 08:00\n",
            Runs("every 2 days at 08:00 from 2026-11-25", 3, "2027-03-12 00:00:00"));
  EXPECT_EQ(2U, Make("every 2 days at 08:00 from 2026-11-25").size());
}

TEST_F(PhraseTriggers, KnowTheFirstMondayAlsoWhenItIsThe7th) {
  EXPECT_EQ("2026-12-07 09:00\n2027-01-04 09:00\n2027-02-01 09:00\n2027-03-01 09:00\n",
            Runs("monthly on first mon at 09:00", 4));
  EXPECT_EQ("2027-01-04 09:00\n2027-02-01 09:00\n", Runs("monthly on week 1 mon at 09:00", 2));
  EXPECT_EQ("2026-11-27 09:00\n2026-12-25 09:00\n2027-01-29 09:00\n2027-02-26 09:00\n",
            Runs("monthly on last fri at 09:00", 4));
}

TEST_F(PhraseTriggers, KnowTheLastDayOfEachMonthUntil2038) {
  const long end = LocalCalendar::End();
  for (const char* const clock : {"18:00", "00:00", "23:30"}) {
    SCOPED_TRACE(clock);
    std::vector<std::string> expected, runs;
    for (long day = m_Calendar.DayOf(Local(Monday)); day <= m_Calendar.DayOf(end); ++day) {
      const LocalCalendar::Date date = m_Calendar.DateOf(day);
      if (date.m_Day == date.m_DaysInMonth) {
        expected.push_back(NoxAgent::DateWords(day) + " " + clock);
      }
    }
    for (const long run :
         RunsBetween(std::string("monthly on last day at ") + clock, Local(Monday), end)) {
      runs.push_back(Show(run).substr(0, 16));
    }
    EXPECT_EQ(134U, expected.size());
    EXPECT_EQ(expected, runs);
  }
  EXPECT_EQ("2027-02-28 18:00\n2028-02-29 18:00\n2029-02-28 18:00\n2030-02-28 18:00\n",
            Runs("monthly on last day in feb at 18:00", 4));
  EXPECT_LE(Make("monthly on last day at 18:00").size(), 7U);
}

TEST_F(PhraseTriggers, RefuseWhatHasPassed) {
  EXPECT_EQ("2026-11-23 09:00 has passed; say a later time, or now",
            ErrorOf("once 2026-11-23 09:00"));
  EXPECT_EQ("there is no such start before the end of the schedule",
            ErrorOf("daily at 08:00 until 2026-11-22"));
}

TEST_F(PhraseTriggers, NameTheNearestThatADocumentCanSay) {
  EXPECT_EQ(
      "a day is no multiple of 7 min, and each day begins anew; the nearest are every 6 min or "
      "every "
      "8 min, or say from when until when: every 7 min from 00:00 until 23:30",
      ErrorOf("every 7 min"));
  EXPECT_EQ("a repetition goes on for whole minutes, not for 90 s; the nearest are 1 min and 2 min",
            ErrorOf("daily at 08:00 every 30 s for 90 s"));
  EXPECT_EQ("a repetition goes on for 672 h, which are 28 days, at most",
            ErrorOf("daily at 08:00 every 1 min for 87000 h"));
  EXPECT_EQ("every 2 h for 1 h does not repeat; say for 2 h at least",
            ErrorOf("daily at 08:00 every 2 h for 1 h"));
  EXPECT_NE(std::string::npos,
            ErrorOf("daily at 00:00 every 10 min for 24 h").find("it can do it for 1430 min"));
  EXPECT_NE(std::string::npos,
            ErrorOf("fri at 22:00 every 10 min for 4 h").find("it can do it for 2 h"));
}

TEST_F(PhraseTriggers, BeginASpanWithinAPeriod) {
  EXPECT_EQ("2027-01-01 08:10\n2027-01-01 08:20\n",
            Runs("every 10 min from 2027-01-01 08:05", 2, "2027-01-01 00:00:00"));
  EXPECT_EQ("2026-11-23 12:10\n2026-11-23 12:20\n", Runs("every 10 min from 2026-11-23 09:00", 2));
}

TEST_F(PhraseTriggers, RefuseAPeriodForStoppingThatDelaysTheNextStart) {
  EXPECT_EQ(
      "for 24 h reaches too near to the next start, or into a day without one, and the scheduler "
      "would lose or delay runs; it can do it for 23 h",
      ErrorOf("daily at 08:00 for 24 h then stop"));
}

}  // namespace NoxAgentTest
