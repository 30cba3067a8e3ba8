#include "agent/crontab/CronRules.h"

#include "tests/agent/crontab/Crontabs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::CronRefusal;
using NoxAgent::MakeCronRules;
using NoxAgent::StartRule;
using NoxAgent::TriggerRule;

namespace {

std::string WrittenRule(const StartRule& rule) {
  const TriggerRule& days = rule.m_Rule;
  std::string text;
  switch (days.m_Type) {
    case TriggerRule::Daily:
      text = "daily";
      break;
    case TriggerRule::Weekly:
      text = "weekly " + std::to_string(days.m_DaysOfWeek);
      break;
    case TriggerRule::MonthlyByDate:
      text = "dates " + std::to_string(days.m_DaysOfMonth) + " of " +
             std::to_string(days.m_MonthsOfYear);
      break;
    default:
      text = "week " + std::to_string(days.m_Week) + " " + std::to_string(days.m_DaysOfWeek) +
             " of " + std::to_string(days.m_MonthsOfYear);
  }
  text += " at " + std::to_string(rule.m_Clock / 60);
  if (days.Repeats()) {
    text += " every " + std::to_string(days.m_IntervalSeconds / 60) + " for " +
            std::to_string(days.m_DurationSeconds / 60);
  }
  return text;
}

std::vector<std::string> RulesOf(const std::string& expression, long cuts = 0) {
  const auto result = MakeCronRules(Expression(expression), cuts);
  if (const auto* const refusal = std::get_if<CronRefusal>(&result)) {
    return {refusal->m_Reason};
  }
  std::vector<std::string> rules;
  for (const StartRule& rule : std::get<std::vector<StartRule>>(result)) {
    rules.push_back(WrittenRule(rule));
  }
  return rules;
}

}  // namespace

using ::testing::ElementsAre;

TEST(CronRules, NameDays) {
  EXPECT_THAT(RulesOf("30 3 * * *"), ElementsAre("daily at 210"));
  EXPECT_THAT(RulesOf("30 3 * * 1-5"), ElementsAre("weekly 62 at 210"));
  EXPECT_THAT(RulesOf("30 3 1,31 * *"), ElementsAre("dates 1073741825 of 4095 at 210"));
  EXPECT_THAT(RulesOf("30 3 1 1-6 *"), ElementsAre("dates 1 of 63 at 210"));
  EXPECT_THAT(RulesOf("30 3 * 12 *"), ElementsAre("dates 2147483647 of 2048 at 210"));
  EXPECT_THAT(RulesOf("30 3 */2 * *"), ElementsAre("dates 1431655765 of 4095 at 210"));
}

TEST(CronRules, NameWeekdaysOfMonthsWeekByWeek) {
  EXPECT_THAT(RulesOf("0 0 * 3 1"),
              ElementsAre("week 1 2 of 4 at 0", "week 2 2 of 4 at 0", "week 3 2 of 4 at 0",
                          "week 4 2 of 4 at 0", "week 5 2 of 4 at 0"));
}

TEST(CronRules, NameDatesAndWeekdaysWhereEitherSuffices) {
  EXPECT_THAT(RulesOf("0 0 13 * 5"), ElementsAre("dates 4096 of 4095 at 0", "weekly 32 at 0"));
  EXPECT_THAT(RulesOf("0 0 13 1 5").size(), 6);
  EXPECT_THAT(RulesOf("0 0 30 2 0"),
              ElementsAre("week 1 1 of 2 at 0", "week 2 1 of 2 at 0", "week 3 1 of 2 at 0",
                          "week 4 1 of 2 at 0", "week 5 1 of 2 at 0"));
  EXPECT_THAT(RulesOf("0 0 1-31 * 5"), ElementsAre("daily at 0"));
  EXPECT_THAT(RulesOf("0 0 1 * 0-6"), ElementsAre("daily at 0"));
}

TEST(CronRules, NameDatesAndWeekdaysThatMustBothMatchOnlyInWholeWeeks) {
  const std::string reason =
      "the day of the month and the weekday must both match, for one of them begins with \"*\", "
      "and no rule of a task says that";
  EXPECT_THAT(RulesOf("0 3 */2 * 1"), ElementsAre(reason));
  EXPECT_THAT(RulesOf("0 3 1-7 * */7"), ElementsAre(reason));
  EXPECT_EQ(
      "write * for the weekday, and have the command look for it: case $(date +\\%w) in 1|5) "
      "COMMAND;; esac",
      std::get<CronRefusal>(MakeCronRules(Expression("0 3 */2 * 1,5"), 0)).m_Advice);
  EXPECT_THAT(RulesOf("0 3 7-13 * */7"), ElementsAre("week 2 1 of 4095 at 180"));
  EXPECT_THAT(
      RulesOf("0 3 1-13,28-31 * */7"),
      ElementsAre("week 1 1 of 4095 at 180", "week 2 1 of 4095 at 180", "week 5 1 of 4095 at 180"));
}

TEST(CronRules, RepeatWithinTheDay) {
  EXPECT_THAT(RulesOf("*/10 * * * *"), ElementsAre("daily at 0 every 10 for 1430"));
  EXPECT_THAT(RulesOf("*/10 8-9 * * *", 1 << 9),
              ElementsAre("daily at 480 every 10 for 50", "daily at 540 every 10 for 50"));
}

TEST(CronRules, AreRefusedWhenThereIsNoSuchDay) {
  EXPECT_THAT(RulesOf("0 0 30 2 *"),
              ElementsAre("it never runs: none of its months has such a day"));
  EXPECT_THAT(RulesOf("0 0 31 4,6,9,11 *"),
              ElementsAre("it never runs: none of its months has such a day"));
  EXPECT_THAT(RulesOf("0 0 29 2 *"), ElementsAre("dates 268435456 of 2 at 0"));
}

TEST(CronRules, AreRefusedWhenTheyAreTooMany) {
  EXPECT_THAT(RulesOf("0,1,3,7,12,20,30,44,59 * * 1-3 1", 0xFFFFFF),
              ElementsAre("it takes 480 rules, and a task may have 300"));
}

}  // namespace NoxAgentTest
