#include "agent/schedule/RestOfPeriod.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::RestOfPeriod;
using NoxAgent::TriggerRule;

namespace {

TriggerRule Every90SecondsForAnHour() {
  TriggerRule rule;
  rule.m_Type = TriggerRule::Daily;
  rule.m_IntervalSeconds = 90;
  rule.m_DurationSeconds = 3600;
  return rule;
}

TriggerRule OnceAt(long begin, long interval = 0, long duration = 0) {
  TriggerRule rule;
  rule.m_Begin = begin;
  rule.m_IntervalSeconds = interval;
  rule.m_DurationSeconds = duration;
  return rule;
}

using Triggers = std::vector<TriggerRule>;

}  // namespace

TEST(RestOfPeriod, GoesOnWithTheNextRepetition) {
  EXPECT_EQ(Triggers{OnceAt(1080, 90, 2520)}, RestOfPeriod(Every90SecondsForAnHour(), 0, 1080));
  EXPECT_EQ(Triggers{OnceAt(3600)}, RestOfPeriod(Every90SecondsForAnHour(), 0, 3511));
  EXPECT_EQ(Triggers(), RestOfPeriod(Every90SecondsForAnHour(), 0, 3601));
}

TEST(RestOfPeriod, HasARepetitionByItselfWhereTheRestIsNoWholeMinutes) {
  EXPECT_EQ((Triggers{OnceAt(1170), OnceAt(1260, 90, 2340)}),
            RestOfPeriod(Every90SecondsForAnHour(), 0, 1081));
}

TEST(RestOfPeriod, KeepsTheEndOfTheRuleAndThatItKills) {
  TriggerRule rule = Every90SecondsForAnHour();
  rule.m_End = 1200;
  rule.m_KillAtEnd = true;
  TriggerRule alone = OnceAt(1170, 0, 2400);
  alone.m_End = 1200;
  alone.m_KillAtEnd = true;
  EXPECT_EQ(Triggers{alone}, RestOfPeriod(rule, 0, 1081));
}

}  // namespace NoxAgentTest
