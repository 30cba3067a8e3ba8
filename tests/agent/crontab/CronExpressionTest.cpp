#include "agent/crontab/CronExpression.h"

#include "tests/agent/crontab/Crontabs.h"

#include <gtest/gtest.h>

#include <functional>

namespace NoxAgentTest {

using NoxAgent::CronExpression;
using NoxAgent::CronRefusal;

namespace {

std::string ReasonAgainst(const std::string& text) {
  const auto parsed = CronExpression::Parse(text);
  const auto* const refusal = std::get_if<CronRefusal>(&parsed);
  return refusal == nullptr ? "none" : refusal->m_Reason;
}

std::string AdviceOn(const std::string& text) {
  const auto parsed = CronExpression::Parse(text);
  const auto* const refusal = std::get_if<CronRefusal>(&parsed);
  return refusal == nullptr ? "none" : refusal->m_Advice;
}

std::uint64_t Bits(std::initializer_list<int> numbers) {
  std::uint64_t bits = 0;
  for (const int number : numbers) {
    bits |= std::uint64_t{1} << number;
  }
  return bits;
}

}  // namespace

TEST(CronExpression, ReadsRangesStepsAndLists) {
  const struct {
    const char* m_Minute;
    std::uint64_t m_Expected;
  } rows[] = {
      {"0", Bits({0})},
      {"59", Bits({59})},
      {"007", Bits({7})},
      {"1,2,40", Bits({1, 2, 40})},
      {"40,1,1", Bits({1, 40})},
      {"3-6", Bits({3, 4, 5, 6})},
      {"3-3", Bits({3})},
      {"*/20", Bits({0, 20, 40})},
      {"*/90", Bits({0})},
      {"*/999999999", Bits({0})},
      {"10-40/10", Bits({10, 20, 30, 40})},
      {"10-39/10", Bits({10, 20, 30})},
      {"5,10-12,*/30", Bits({0, 5, 10, 11, 12, 30})},
      {"*", ~std::uint64_t{0} >> 4},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.m_Expected, Expression(std::string(row.m_Minute) + " * * * *").Minutes())
        << row.m_Minute;
  }
}

TEST(CronExpression, HasTheMasksOfTriggers) {
  const CronExpression all = Expression("* * * * *");
  EXPECT_EQ(0xFFFFFF, all.Hours());
  EXPECT_EQ(0x7FFFFFFF, all.DaysOfMonth());
  EXPECT_EQ(0xFFF, all.MonthsOfYear());
  EXPECT_EQ(0x7F, all.DaysOfWeek());
  const CronExpression some = Expression("0 0,23 1,31 1,12 1,6");
  EXPECT_EQ(0x800001, some.Hours());
  EXPECT_EQ(0x40000001, some.DaysOfMonth());
  EXPECT_EQ(0x801, some.MonthsOfYear());
  EXPECT_EQ(0x42, some.DaysOfWeek());
}

TEST(CronExpression, ReadsNamesInAnyCase) {
  EXPECT_EQ(0x823, Expression("0 0 * jan-FEB,Jun,dec *").MonthsOfYear());
  EXPECT_EQ(0x3E, Expression("0 0 * * Mon-fri").DaysOfWeek());
  EXPECT_EQ(0x41, Expression("0 0 * * SAT,sun").DaysOfWeek());
  EXPECT_EQ(0x2A, Expression("0 0 * * mon-fri/2").DaysOfWeek());
}

TEST(CronExpression, TakesSevenForSunday) {
  EXPECT_EQ(0x01, Expression("0 0 * * 7").DaysOfWeek());
  EXPECT_EQ(0x61, Expression("0 0 * * 5-7").DaysOfWeek());
  EXPECT_EQ(0x61, Expression("0 0 * * fri-7").DaysOfWeek());
  EXPECT_EQ(0x7F, Expression("0 0 * * 0-7").DaysOfWeek());
  EXPECT_EQ(0x55, Expression("0 0 * * */2").DaysOfWeek());
  EXPECT_EQ(0x01, Expression("0 0 * * */7").DaysOfWeek());
}

TEST(CronExpression, ReadsNicknames) {
  const struct {
    const char* m_Nickname;
    const char* m_Fields;
  } rows[] = {{"@yearly", "0 0 1 1 *"}, {"@annually", "0 0 1 1 *"}, {"@monthly", "0 0 1 * *"},
              {"@weekly", "0 0 * * 0"}, {"@daily", "0 0 * * *"},    {"@midnight", "0 0 * * *"},
              {"@hourly", "0 * * * *"}};
  for (const auto& row : rows) {
    const CronExpression nickname = Expression(row.m_Nickname);
    const CronExpression fields = Expression(row.m_Fields);
    EXPECT_EQ(fields.Minutes(), nickname.Minutes()) << row.m_Nickname;
    EXPECT_EQ(fields.Hours(), nickname.Hours()) << row.m_Nickname;
    EXPECT_EQ(fields.DaysOfMonth(), nickname.DaysOfMonth()) << row.m_Nickname;
    EXPECT_EQ(fields.MonthsOfYear(), nickname.MonthsOfYear()) << row.m_Nickname;
    EXPECT_EQ(fields.DaysOfWeek(), nickname.DaysOfWeek()) << row.m_Nickname;
    EXPECT_FALSE(nickname.EitherDaySuffices()) << row.m_Nickname;
  }
}

TEST(CronExpression, WantsEitherDayOnlyWhenBothAreRestricted) {
  // 2026-06-01 is a Monday.
  const CronExpression either = Expression("0 12 13 * 1");
  EXPECT_TRUE(either.Matches(0, 12, 13, 6, 6));
  EXPECT_TRUE(either.Matches(0, 12, 1, 6, 1));
  EXPECT_FALSE(either.Matches(0, 12, 2, 6, 2));
  const CronExpression both = Expression("0 12 */2 * 1");
  EXPECT_TRUE(both.Matches(0, 12, 1, 6, 1));
  EXPECT_FALSE(both.Matches(0, 12, 3, 6, 3));
  EXPECT_FALSE(both.Matches(0, 12, 8, 6, 1));
  EXPECT_FALSE(Expression("0 12 13 * *,1").EitherDaySuffices());
  EXPECT_TRUE(Expression("0 12 13 * 0-7").EitherDaySuffices());
}

TEST(CronExpression, MatchesMinutes) {
  const CronExpression expression = Expression("30 8-10 1 6 *");
  EXPECT_TRUE(expression.Matches(30, 8, 1, 6, 1));
  EXPECT_TRUE(expression.Matches(30, 10, 1, 6, 5));
  EXPECT_FALSE(expression.Matches(31, 8, 1, 6, 1));
  EXPECT_FALSE(expression.Matches(30, 11, 1, 6, 1));
  EXPECT_FALSE(expression.Matches(30, 8, 2, 6, 1));
  EXPECT_FALSE(expression.Matches(30, 8, 1, 7, 1));
}

TEST(CronExpression, NamesFieldWordAndColumnOfAnError) {
  const struct {
    const char* m_Text;
    const char* m_Reason;
  } rows[] = {
      {"60 * * * *", "the minute \"60\" in column 1: 60 is not between 0 and 59"},
      {"0 24 * * *", "the hour \"24\" in column 3: 24 is not between 0 and 23"},
      {"0  0 0 * *", "the day of the month \"0\" in column 6: 0 is not between 1 and 31"},
      {"0 0 1,32 * *", "the day of the month \"32\" in column 7: 32 is not between 1 and 31"},
      {"0 0 * 13 *", "the month \"13\" in column 7: 13 is not between 1 and 12"},
      {"0 0 * * 8", "the weekday \"8\" in column 9: 8 is not between 0 and 7"},
      {"x * * * *", "the minute \"x\" in column 1: \"x\" is no number"},
      {"+5 * * * *", "the minute \"+5\" in column 1: \"+5\" is no number"},
      {"1234567890 * * * *", "the minute \"1234567890\" in column 1: \"1234567890\" is no number"},
      {"0 0 * monday *",
       "the month \"monday\" in column 7: \"monday\" is neither a number nor a name of three "
       "letters, such as feb"},
      {"0 0 * * Monday",
       "the weekday \"Monday\" in column 9: \"Monday\" is neither a number nor a name of three "
       "letters, such as mon"},
      {"1,,2 * * * *", "the minute \"\" in column 3: a number is missing"},
      {", * * * *", "the minute \"\" in column 1: a number is missing"},
      {"5- * * * *", "the minute \"5-\" in column 1: a number is missing"},
      {"-5 * * * *", "the minute \"-5\" in column 1: a number is missing"},
      {"*-5 * * * *", "the minute \"*-5\" in column 1: \"*\" is no number"},
      {"1-2-3 * * * *", "the minute \"1-2-3\" in column 1: \"2-3\" is no number"},
      {"*/0 * * * *",
       "the minute \"*/0\" in column 1: the step behind \"/\" is to be a number from 1 on"},
      {"*/ * * * *",
       "the minute \"*/\" in column 1: the step behind \"/\" is to be a number from 1 on"},
      {"*/2/3 * * * *",
       "the minute \"*/2/3\" in column 1: the step behind \"/\" is to be a number from 1 on"},
      {"5/15 * * * *", "the minute \"5/15\" in column 1: a step needs \"*\" or a range before it"},
      {"0 22-2 * * *", "the hour \"22-2\" in column 3: the range begins behind its end"},
      {"", "there are 0 fields instead of five"},
      {" 0 0 * *\t", "there are 4 fields instead of five"},
      {"0 0 * * * x", "nothing is expected in column 11, behind five fields"},
      {"@daily x", "nothing is expected in column 8"},
      {"@dayly", "\"@dayly\" in column 1 is not known"},
      {"@reboot", "@reboot is no time: a task has no start for when the machine comes up"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.m_Reason, ReasonAgainst(row.m_Text)) << row.m_Text;
  }
}

TEST(CronExpression, CountsColumnsFromWhereItStands) {
  const auto parsed = CronExpression::Parse("0 99 * * *", 5);
  EXPECT_EQ("the hour \"99\" in column 7: 99 is not between 0 and 23",
            std::get<CronRefusal>(parsed).m_Reason);
}

TEST(CronExpression, AdvisesWhatToWriteInstead) {
  EXPECT_EQ("write 5-59/15 for steps from 5 on", AdviceOn("5/15 * * * *"));
  EXPECT_EQ("write 22-23,0-2", AdviceOn("0 22-2 * * *"));
  EXPECT_EQ("write 11-12,1-2", AdviceOn("0 0 * nov-feb *"));
  EXPECT_EQ("write 5-7", AdviceOn("0 0 * * fri-sun"));
  EXPECT_EQ("write 5-6,0-1", AdviceOn("0 0 * * fri-mon"));
  EXPECT_EQ("write 23,0", AdviceOn("0 23-0 * * *"));
}

}  // namespace NoxAgentTest
