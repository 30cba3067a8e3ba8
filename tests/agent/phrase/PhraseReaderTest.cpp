#include "agent/phrase/PhraseReader.h"

#include "agent/phrase/PhraseText.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::ExpectedBehind;
using NoxAgent::LocalCalendar;
using NoxAgent::PhraseError;
using Words = std::vector<std::string>;

namespace {

constexpr const char* Noon = "2026-11-23 12:03:00";

class PhraseReader : public testing::Test {
 protected:
  PhraseReader() : m_Zone(TestSupport::NewYork), m_Calendar(Local(Noon) - 366 * TestSupport::Day) {}

  std::string Read(const Words& words) const {
    return PhraseText(NoxAgent::ReadPhrase(words, m_Calendar, Local(Noon)), m_Calendar);
  }

  std::string ErrorOf(const Words& words) const {
    try {
      return "no error: " + Read(words);
    } catch (const PhraseError& error) {
      return error.what();
    }
  }

  VirtualTime::Zone m_Zone;
  LocalCalendar m_Calendar;
};

}  // namespace

TEST_F(PhraseReader, TakesWordsOneByOneOrAsOneText) {
  EXPECT_EQ("daily at 02:30", Read({"daily", "at", "02:30"}));
  EXPECT_EQ("daily at 02:30", Read({"daily at 02:30"}));
}

TEST_F(PhraseReader, IsForgivingAboutHowWordsAreWritten) {
  EXPECT_EQ("mon,wed at 08:00,12:00", Read({"Monday,", "wednesday AT 8:00 , noon"}));
  EXPECT_EQ("every 10 min", Read({"every", "10", "min"}));
  EXPECT_EQ("every 10 min", Read({"every", "10m"}));
  EXPECT_EQ("every 90 min from 08:00 until 17:00", Read({"every 1h30min from 08:00 until 17:00"}));
  EXPECT_EQ("every 1 h on weekdays", Read({"every hour on mon-fri"}));
  EXPECT_EQ("weekdays at 07:00", Read({"every weekday at 07:00"}));
  EXPECT_EQ("every 1 h", Read({"hourly"}));
  EXPECT_EQ("daily at 02:30", Read({"every day at 02:30"}));
  EXPECT_EQ("mon,fri at 02:30", Read({"every monday, friday at 02:30"}));
  EXPECT_EQ("weekends at 00:00", Read({"sat-sun at midnight"}));
}

TEST_F(PhraseReader, ReadsALengthOfSeveralPartsWhereverALengthStands) {
  for (const char* const length : {"1h30m", "1h30min", "1h 30min", "1 h 30 min", "1 hour 30 min"}) {
    SCOPED_TRACE(length);
    const std::string words = length;
    EXPECT_EQ("every 90 min", Read({"every " + words}));
    EXPECT_EQ("once 2026-11-23 13:33", Read({"once in " + words}));
    EXPECT_EQ("every 90 min from 08:00 until 09:30",
              Read({"daily at 08:00 every " + words + " for " + words}));
  }
  EXPECT_EQ("every 5430 s", Read({"every", "1", "h", "30", "min", "30", "s"}));
  EXPECT_NE(std::string::npos, ErrorOf({"every 1 h 30"}).find("cannot be read at \"1 h 30\""));
}

TEST_F(PhraseReader, ReadsTheClockOfTwelveHours) {
  EXPECT_EQ("daily at 02:00,14:00,14:30", Read({"daily at 2am, 2 pm, 2:30pm"}));
  EXPECT_EQ("daily at 14:30", Read({"daily", "at", "2:30", "PM"}));
  EXPECT_EQ("daily at 00:15,12:00", Read({"daily at 12:15 am,12 pm"}));
  EXPECT_EQ("every 10 min from 09:00 until 17:00", Read({"every 10 min from 9am until 5 pm"}));
  for (const char* const none : {"0pm", "13pm", "14:30pm", "pm", "2:3pm", "2p"}) {
    EXPECT_NE(std::string::npos, ErrorOf({std::string("daily at ") + none}).find("CLOCKS")) << none;
  }
}

TEST_F(PhraseReader, ReadsEachForm) {
  for (const char* const words : {"now",
                                  "once 2027-01-04 09:00",
                                  "once 2027-01-04 09:00 every 30 min for 2 h",
                                  "daily at 02:30:15",
                                  "weekdays at 02:30",
                                  "mon,wed in jan,jul at 02:30",
                                  "daily in dec at 02:30",
                                  "every 3 days at 08:00",
                                  "every 2 weeks on mon,fri at 08:00",
                                  "monthly on 1,15 in jan,jul at 06:00",
                                  "monthly on last day in feb at 23:30",
                                  "monthly on last mon at 07:00",
                                  "monthly on first mon at 07:00",
                                  "monthly on week 5 weekends in dec at 07:00",
                                  "daily at 22:00 for 6 h then stop",
                                  "mon at 08:00,12:00 every 10 min for 2 h then stop",
                                  "every 10 min from 08:00 until 18:00",
                                  "cron '15 3 * * 1-5'",
                                  "cron '@daily' from 2027-01-01",
                                  "mon at 07:00 and daily at 12:00",
                                  "daily at 08:00 from 2027-01-01 09:30 until 2027-06-30"}) {
    EXPECT_EQ(words, Read({words}));
  }
}

TEST_F(PhraseReader, ReadsTheArgumentBehindCronAsOneWord) {
  EXPECT_EQ("cron '15 3 * * MON'", Read({"cron", "15 3 * * MON"}));
}

TEST_F(PhraseReader, CountsFromNowWhatIsSoSaid) {
  EXPECT_EQ("once 2026-11-23 14:03", Read({"once in 2 h"}));
  EXPECT_EQ("once 2026-11-23 18:00", Read({"once at 18:00"}));
  EXPECT_EQ("once 2026-11-24 09:00", Read({"once at 09:00"}));
}

TEST_F(PhraseReader, PointsAtTheWordThatCannotStandThere) {
  EXPECT_EQ(
      "the schedule \"daily at [25:00]\" cannot be read at \"25:00\"; there could stand CLOCKS "
      "(times of day: 02:30, or 08:00,20:00)",
      ErrorOf({"daily at 25:00"}));
  EXPECT_EQ(
      "the schedule \"every 2 [moons] at 08:00\" cannot be read at \"moons\"; there could stand "
      "days or weeks; a length of time is a whole number with its unit, s, min or h, as in 30 min",
      ErrorOf({"every 2 moons at 08:00"}));
}

TEST_F(PhraseReader, TellsWhatCouldFollow) {
  EXPECT_EQ((Words{"day", "WEEKDAYS"}), ExpectedBehind({"monthly", "on", "last"}));
  EXPECT_EQ("the schedule \"daily\" ends too early; there could follow in or at",
            ErrorOf({"daily"}));
  EXPECT_EQ(0U, ErrorOf({}).rfind("it is not said when; there could stand now, once, daily, ", 0));
  EXPECT_EQ((Words{"in", "at"}), ExpectedBehind({"daily"}));
  EXPECT_EQ((Words{"days", "weeks"}), ExpectedBehind({"every", "2"}));
  EXPECT_EQ(Words(), ExpectedBehind({"yearly"}));
}

TEST_F(PhraseReader, RefusesMoreWordsThanAnybodySays) {
  Words words{"daily at 08:00"};
  for (int i = 0; i < 1000; ++i) {
    words.emplace_back("and daily at 08:00");
  }
  EXPECT_EQ("the schedule has more than 500 words; say it as several tasks", ErrorOf(words));
  EXPECT_EQ(Words(), ExpectedBehind(words));
}

TEST_F(PhraseReader, RefusesTimesThatAreNone) {
  EXPECT_EQ(
      "the schedule \"once [2027-01-04]\" cannot be read: it lacks a time of day, as in once "
      "2027-01-04 09:00",
      ErrorOf({"once 2027-01-04"}));
  EXPECT_EQ(
      "the schedule \"once 2027-03-14 [02:30]\" cannot be read: the clocks leave out 02:30 on "
      "2027-03-14; the nearest time of day is 03:30",
      ErrorOf({"once 2027-03-14 02:30"}));
  EXPECT_NE(std::string::npos, ErrorOf({"once 2027-02-29 09:00"}).find("[2027-02-29]"));
  EXPECT_NE(std::string::npos,
            ErrorOf({"mon at 08:00,12:00 every 10 min until 18:00"}).find("as in for 2 h"));
}

TEST_F(PhraseReader, KnowsWhatNewcomersTypeFirst) {
  EXPECT_NE(std::string::npos, ErrorOf({"*/5", "*", "*", "*", "*"}).find("cron '15 3 * * 1-5'"));
  EXPECT_NE(std::string::npos, ErrorOf({"@daily"}).find("cron '15 3 * * 1-5'"));
  EXPECT_NE(std::string::npos,
            ErrorOf({"cron", "0", "3", "*", "*", "*"}).find("one word in quotes"));
  EXPECT_NE(std::string::npos,
            ErrorOf({"daily", "at", "02:30", "/bin/ls"}).find("the command stands behind --"));
}

TEST_F(PhraseReader, SaysWhatALengthOfTimeIsWhereItsUnitIsMissing) {
  const std::string hint =
      "; a length of time is a whole number with its unit, s, min or h, as in 30 min";
  for (const char* const words : {"every 10", "every 10 mn", "every 10mn", "once in 10",
                                  "daily at 08:00 every 10 min for 2"}) {
    EXPECT_TRUE(ErrorOf({words}).ends_with(hint)) << ErrorOf({words});
  }
  EXPECT_EQ(std::string::npos, ErrorOf({"every moon"}).find(hint)) << "that is no number";
}

TEST_F(PhraseReader, SaysWhyADayIsNone) {
  const std::string end =
      "; days go to 2038-01-12, as scheduling ends where seconds since 1970 outgrow 32 bits";
  EXPECT_TRUE(ErrorOf({"once 2040-01-01 09:00"}).ends_with(end));
  EXPECT_TRUE(ErrorOf({"daily at 08:00 until 2038-01-13"}).ends_with(end));
  EXPECT_EQ("daily at 08:00 until 2038-01-12", Read({"daily at 08:00 until 2038-01-12"}));
  EXPECT_TRUE(ErrorOf({"once 1969-12-31"}).ends_with("; days go from 1970-01-01 on"));
  EXPECT_TRUE(ErrorOf({"once 2027-02-29 09:00"}).ends_with("; there is no such day"));
  EXPECT_TRUE(ErrorOf({"once 2040-99-99"}).ends_with(end));
}

TEST_F(PhraseReader, SaysWhereTheEndOfADayBelongs) {
  const std::string hint = "; 24:00 is 00:00 of the next day";
  EXPECT_TRUE(ErrorOf({"daily at 24:00"}).ends_with(hint));
  EXPECT_TRUE(ErrorOf({"daily at 12:00,24:00"}).ends_with(hint));
  EXPECT_TRUE(ErrorOf({"every 10 min from 22:00 until 24:00"}).ends_with(hint));
}

}  // namespace NoxAgentTest
