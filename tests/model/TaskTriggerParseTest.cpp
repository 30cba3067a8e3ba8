#include "model/TaskTrigger.h"
#include "tests/model/Moment.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace {

const std::string begin = "<BeginDate>2005/03/01 08:00:00</BeginDate>";

/// Built in UTC, so that dates read as they are written.
class TaskTriggerParse : public testing::Test {
 protected:
  CTaskTrigger Read(const std::string& xml) {
    return CTaskTrigger(AString::FromUtf8(xml), &m_LastRun);
  }
  CTaskTrigger ReadWith(const std::string& attributes, const std::string& children = begin) {
    return Read("<Trigger " + attributes + ">" + children + "</Trigger>");
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  long m_LastRun = -1;
};

TEST_F(TaskTriggerParse, ReadsEveryField) {
  const CTaskTrigger trigger = ReadWith(
      "Description=\"d\" Type=\"4\" Interval=\"30\" IntervalUnit=\"MINUTE\" Duration=\"120\" "
      "KillAtEnd=\"1\"",
      begin +
          "<EndDate>2006/03/01 08:00:00</EndDate><DaysInterval>2</DaysInterval>"
          "<WeeksInterval>3</WeeksInterval><DaysOfWeek>62</DaysOfWeek>"
          "<DaysOfMonth>5</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear><Week>5</Week>");
  EXPECT_EQ(trigger.m_Type, 4);
  EXPECT_EQ(trigger.m_Interval, 1800);
  EXPECT_EQ(trigger.m_Duration, 7200);
  EXPECT_FALSE(trigger.m_Disabled);
  EXPECT_EQ(trigger.m_Description, AString(L"d"));
  EXPECT_TRUE(trigger.m_KillAtEnd);
  EXPECT_EQ(Moment::Show(trigger.m_BeginDate), "2005-03-01 08:00:00 +0000");
  EXPECT_EQ(Moment::Show(trigger.m_EndDate), "2006-03-01 08:00:00 +0000");
  EXPECT_EQ(trigger.m_DaysInterval, 2);
  EXPECT_EQ(trigger.m_WeeksInterval, 3);
  EXPECT_EQ(trigger.m_DaysOfWeek, 62u);
  EXPECT_EQ(trigger.m_DaysOfMonth, 5u);
  EXPECT_EQ(trigger.m_MonthsOfYear, 4095u);
  EXPECT_EQ(trigger.m_Week, 5);
  EXPECT_EQ(trigger.m_pLastRun, &m_LastRun);
  EXPECT_EQ(trigger.m_NextRun, -1);
  EXPECT_EQ(trigger.m_ClosestRun, -1);
}

TEST_F(TaskTriggerParse, WithoutAnythingButABeginIsOnceAndHasTheDefaults) {
  const CTaskTrigger trigger = ReadWith("");
  EXPECT_EQ(trigger.m_Type, CTaskTrigger::Once);
  EXPECT_FALSE(trigger.m_Disabled);
  EXPECT_TRUE(trigger.m_Description.IsEmpty());
  EXPECT_EQ(trigger.m_Interval, 0);
  EXPECT_EQ(trigger.m_Duration, 0);
  EXPECT_FALSE(trigger.m_KillAtEnd);
  EXPECT_EQ(trigger.m_EndDate, -1);
  EXPECT_EQ(trigger.m_DaysInterval, 1);
  EXPECT_EQ(trigger.m_WeeksInterval, 1);
  EXPECT_EQ(trigger.m_DaysOfWeek, 0u);
  EXPECT_EQ(trigger.m_DaysOfMonth, 0u);
  EXPECT_EQ(trigger.m_MonthsOfYear, 0u);
  EXPECT_EQ(trigger.m_Week, 1);
}

TEST_F(TaskTriggerParse, DisabledByTheUsualWordsAndByY) {
  for (const char* word : {"true", "TRUE", "yes", "on", "1", "2", "Y", "y"}) {
    EXPECT_TRUE(ReadWith(std::string("Disabled=\"") + word + "\"").m_Disabled) << word;
  }
  for (const char* word : {"", "false", "no", "off", "0", "N", "n", "Yy", " "}) {
    EXPECT_FALSE(ReadWith(std::string("Disabled=\"") + word + "\"").m_Disabled) << word;
  }
}

TEST_F(TaskTriggerParse, DisabledReadsNothingElse) {
  const CTaskTrigger trigger = ReadWith(
      "Disabled=\"y\" Type=\"2\" Description=\"d\" Interval=\"1\" Duration=\"1\" KillAtEnd=\"1\"");
  EXPECT_EQ(trigger.m_Type, 0);
  EXPECT_TRUE(trigger.m_Description.IsEmpty());
  EXPECT_EQ(trigger.m_Interval, 0);
  EXPECT_EQ(trigger.m_Duration, 0);
  EXPECT_FALSE(trigger.m_KillAtEnd);
  EXPECT_EQ(trigger.m_BeginDate, 0);
  EXPECT_EQ(trigger.m_EndDate, 0);
  EXPECT_EQ(trigger.m_DaysInterval, 0);
  EXPECT_EQ(trigger.m_WeeksInterval, 0);
  EXPECT_EQ(trigger.m_Week, 0);
  EXPECT_EQ(trigger.m_NextRun, -1);
}

TEST_F(TaskTriggerParse, TypesAboveFourAreDisabledTheEventTypesIncluded) {
  for (const long type : {5L, 6L, 7L, 8L, 2147483647L}) {
    const CTaskTrigger trigger =
        ReadWith("Description=\"d\" Interval=\"1\" Type=\"" + std::to_string(type) + "\"");
    EXPECT_TRUE(trigger.m_Disabled) << type;
    EXPECT_EQ(trigger.m_Type, type);
    EXPECT_EQ(trigger.m_Description, AString(L"d")) << type;
    EXPECT_EQ(trigger.m_Interval, 0) << type;
  }
}

TEST_F(TaskTriggerParse, NegativeTypesWithoutAMeaningPass) {
  for (const long type : {-2L, -3L, -2147483647L - 1}) {
    const CTaskTrigger trigger = ReadWith("Type=\"" + std::to_string(type) + "\"");
    EXPECT_FALSE(trigger.m_Disabled) << type;
    EXPECT_EQ(trigger.m_Type, type);
    EXPECT_TRUE(trigger.m_Description.IsEmpty()) << type;
  }
}

TEST_F(TaskTriggerParse, AsSoonAsPossibleNeedsNoBeginAndNamesItself) {
  const CTaskTrigger trigger = ReadWith("Type=\"-1\"", "<Week>9</Week>");
  EXPECT_FALSE(trigger.m_Disabled);
  EXPECT_EQ(trigger.m_BeginDate, -1);
  EXPECT_EQ(trigger.m_EndDate, -1);
  EXPECT_EQ(trigger.m_Description, AString(L"Run as soon as possible"));
  EXPECT_EQ(trigger.m_DaysInterval, 1);
  EXPECT_EQ(trigger.m_Week, 1);
  EXPECT_EQ(ReadWith("Type=\"-1\" Description=\"mine\"").m_Description, AString(L"mine"));
}

TEST_F(TaskTriggerParse, IntervalIsInItsUnitAndOtherwiseInMinutes) {
  const struct {
    const char* unit;
    long seconds;
  } rows[] = {{"HOUR", 7200}, {"hour", 7200}, {"Hour", 7200},  {"SECOND", 2},
              {"second", 2},  {"SeCoNd", 2},  {"MINUTE", 120}, {"HOURS", 120},
              {"", 120},      {"DAY", 120},   {" HOUR", 120}};
  for (const auto& row : rows) {
    EXPECT_EQ(ReadWith(std::string("Interval=\"2\" IntervalUnit=\"") + row.unit + "\"").m_Interval,
              row.seconds)
        << row.unit;
  }
  EXPECT_EQ(ReadWith("Interval=\"2\"").m_Interval, 120);
  EXPECT_EQ(ReadWith("Interval=\"two\"").m_Interval, 0);
  EXPECT_EQ(ReadWith("Interval=\"-2\"").m_Interval, -120);
}

TEST_F(TaskTriggerParse, IntervalAndDurationStopAtTheEndsOfThe32BitRange) {
  EXPECT_EQ(ReadWith("Interval=\"2147483647\" IntervalUnit=\"HOUR\"").m_Interval, 2147483647);
  EXPECT_EQ(ReadWith("Interval=\"-2147483648\"").m_Interval, -2147483647 - 1);
  EXPECT_EQ(ReadWith("Interval=\"99999999999999999999\" IntervalUnit=\"SECOND\"").m_Interval,
            2147483647);
  EXPECT_EQ(ReadWith("Duration=\"2147483647\"").m_Duration, 2147483647);
  EXPECT_EQ(ReadWith("Interval=\"1\" Duration=\"-2147483648\"").m_Duration, -2147483647 - 1);
}

TEST_F(TaskTriggerParse, NegativeDurationIsRaisedToZeroOnlyWithoutAnInterval) {
  EXPECT_EQ(ReadWith("Duration=\"-5\"").m_Duration, 0);
  EXPECT_EQ(ReadWith("Duration=\"-5\" Interval=\"10\"").m_Duration, -300);
  EXPECT_EQ(ReadWith("Duration=\"-5\" Interval=\"-10\"").m_Duration, -300);
  EXPECT_EQ(ReadWith("Duration=\"5\"").m_Duration, 300);
}

TEST_F(TaskTriggerParse, KillAtEndIsAnyNumberButZero) {
  EXPECT_TRUE(ReadWith("KillAtEnd=\"1\"").m_KillAtEnd);
  EXPECT_TRUE(ReadWith("KillAtEnd=\"-1\"").m_KillAtEnd);
  EXPECT_FALSE(ReadWith("KillAtEnd=\"0\"").m_KillAtEnd);
  EXPECT_FALSE(ReadWith("KillAtEnd=\"true\"").m_KillAtEnd);
}

TEST_F(TaskTriggerParse, BeginDateHasASecondReadingAndEndDateHasNone) {
  const struct {
    const char* text;
    const char* begin;
    const char* end;
  } rows[] = {
      {"2005/03/01 08:00:00", "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {"2005-03-01 08:00:00", "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {"2005-03-01", "2005-03-01 00:00:00 +0000", "2005-03-01 00:00:00 +0000"},
      {"2005/3/1 8:00:00", "2005-03-01 08:00:00 +0000", "-"},
      {" 2005-03-01 08:00:00 ", "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {"\n\t\t2005/03/01 08:00:00\r\n\t", "2005-03-01 08:00:00 +0000", "2005-03-01 08:00:00 +0000"},
      {"\t2005-03-01\n", "2005-03-01 00:00:00 +0000", "2005-03-01 00:00:00 +0000"},
      {"\n2005/3/1 8:00:00\n", "2005-03-01 08:00:00 +0000", "-"},
      {"\n", "-", "-"},
      {"1/3/2005", "-", "-"},
      {"1970-01-01 00:00:00", "-", "-"},  // the moment 0 reads as no date
      {"", "-", "-"},
  };
  for (const auto& row : rows) {
    const std::string text(row.text);
    const CTaskTrigger trigger = ReadWith(
        "Type=\"1\"", "<BeginDate>" + text + "</BeginDate><EndDate>" + text + "</EndDate>");
    EXPECT_EQ(Moment::Show(trigger.m_BeginDate), row.begin) << text;
    EXPECT_EQ(Moment::Show(trigger.m_EndDate), row.end) << text;
    EXPECT_EQ(trigger.m_Disabled, trigger.m_BeginDate == -1) << text;
  }
}

TEST_F(TaskTriggerParse, DatesAreLocalTime) {
  const VirtualTime::Zone zone("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(Moment::Show(ReadWith("").m_BeginDate), "2005-03-01 08:00:00 -0500");
  EXPECT_EQ(ReadWith("").m_BeginDate, 1109682000);
}

TEST_F(TaskTriggerParse, WithoutABeginIsDisabledAndItsCountsAreNotNormalised) {
  const CTaskTrigger trigger =
      ReadWith("Type=\"1\" Interval=\"1\" Duration=\"1\" KillAtEnd=\"1\" Description=\"d\"",
               "<EndDate>2006-01-01</EndDate><DaysInterval>2</DaysInterval><Week>3</Week>");
  EXPECT_TRUE(trigger.m_Disabled);
  EXPECT_EQ(trigger.m_Type, 1);
  EXPECT_EQ(trigger.m_Interval, 60);
  EXPECT_EQ(trigger.m_Duration, 60);
  EXPECT_TRUE(trigger.m_KillAtEnd);
  EXPECT_EQ(trigger.m_BeginDate, -1);
  EXPECT_EQ(Moment::Show(trigger.m_EndDate), "2006-01-01 00:00:00 +0000");
  EXPECT_EQ(trigger.m_DaysInterval, 0);
  EXPECT_EQ(trigger.m_WeeksInterval, 0);
  EXPECT_EQ(trigger.m_Week, 0);
}

TEST_F(TaskTriggerParse, EndBeforeTheBeginMovesUpToIt) {
  const auto end = [this](const char* text) {
    return Moment::Show(ReadWith("", begin + "<EndDate>" + text + "</EndDate>").m_EndDate);
  };
  EXPECT_EQ(end("2005-03-01 07:59:59"), "2005-03-01 08:00:00 +0000");
  EXPECT_EQ(end("1999-01-01"), "2005-03-01 08:00:00 +0000");
  EXPECT_EQ(end("2005-03-01 08:00:00"), "2005-03-01 08:00:00 +0000");
  EXPECT_EQ(end("2005-03-01 08:00:01"), "2005-03-01 08:00:01 +0000");
}

TEST_F(TaskTriggerParse, CountsBelowOneAreOne) {
  for (const char* text : {"0", "-1", "-2147483648", "x", ""}) {
    const std::string value(text);
    const CTaskTrigger trigger =
        ReadWith("", begin + "<DaysInterval>" + value + "</DaysInterval><WeeksInterval>" + value +
                         "</WeeksInterval>");
    EXPECT_EQ(trigger.m_DaysInterval, 1) << text;
    EXPECT_EQ(trigger.m_WeeksInterval, 1) << text;
  }
  EXPECT_EQ(ReadWith("", begin + "<DaysInterval>400</DaysInterval>").m_DaysInterval, 400);
}

TEST_F(TaskTriggerParse, WeekOutsideOneToFiveIsTheFirst) {
  const struct {
    const char* text;
    long week;
  } rows[] = {{"0", 1}, {"1", 1}, {"2", 2}, {"4", 4}, {"5", 5}, {"6", 1}, {"-1", 1}, {"x", 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(ReadWith("", begin + "<Week>" + row.text + "</Week>").m_Week, row.week) << row.text;
  }
}

TEST_F(TaskTriggerParse, MasksAreTakenAsTheyAre) {
  const struct {
    const char* text;
    std::uint32_t mask;
  } rows[] = {{"34", 34},
              {"0", 0},
              {"-1", 4294967295u},
              {"2147483647", 2147483647},
              {"4294967295", 2147483647},  // a number stops at the end of the signed range
              {"1,5", 0},
              {"0x22", 0}};
  for (const auto& row : rows) {
    const std::string value(row.text);
    const CTaskTrigger trigger =
        ReadWith("", begin + "<DaysOfWeek>" + value + "</DaysOfWeek><DaysOfMonth>" + value +
                         "</DaysOfMonth><MonthsOfYear>" + value + "</MonthsOfYear>");
    EXPECT_EQ(trigger.m_DaysOfWeek, row.mask) << row.text;
    EXPECT_EQ(trigger.m_DaysOfMonth, row.mask) << row.text;
    EXPECT_EQ(trigger.m_MonthsOfYear, row.mask) << row.text;
  }
}

TEST_F(TaskTriggerParse, AnElementThatCannotBeReadIsDisabled) {
  for (const char* xml :
       {"", "x", "<Trigger", "<Trigger>", "<Task><Trigger Type=\"-1\"/></Task>"}) {
    const CTaskTrigger trigger = Read(xml);
    EXPECT_TRUE(trigger.m_Disabled) << xml;
    EXPECT_EQ(trigger.m_Type, 0) << xml;
    EXPECT_EQ(trigger.m_BeginDate, -1) << xml;
  }
}

}  // namespace
