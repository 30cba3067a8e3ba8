#include "agent/schedule/StartTriggers.h"

#include "agent/schedule/SchedulerRuns.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using namespace NoxAgent;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::Day;
using TestSupport::Hour;
using TestSupport::Minute;

namespace {

// Every 20 minutes from 08:00 to 09:00 on Mondays and Tuesdays; 2026-03-02 is a Monday.
StartRule TwoMornings() {
  StartRule rule;
  rule.m_Rule.m_Type = TriggerRule::Weekly;
  rule.m_Rule.m_DaysOfWeek = 6;
  rule.m_Rule.m_IntervalSeconds = 20 * Minute;
  rule.m_Rule.m_DurationSeconds = Hour;
  rule.m_Clock = 8 * Hour;
  return rule;
}

std::vector<TriggerRule> TriggersFrom(const StartRule& rule, const std::string& from) {
  const LocalCalendar calendar(Local("2026-03-01 00:00:00"));
  return StartTriggers({rule}, calendar, Local("2026-03-" + from));
}

std::vector<std::string> FirstRunsFrom(const StartRule& rule, const std::string& from) {
  const LocalCalendar calendar(Local("2026-03-01 00:00:00"));
  std::vector<SchedulerTrigger> triggers;
  for (const TriggerRule& trigger : TriggersFrom(rule, from)) {
    triggers.emplace_back(trigger, calendar);
  }
  SchedulerRuns::Setting setting;
  setting.m_From = setting.m_Reading = Local("2026-03-" + from);
  setting.m_Until = setting.m_From + 7 * Day;
  SchedulerRuns runs(calendar, triggers, setting);
  std::vector<std::string> moments;
  while (const auto span = runs.Next()) {
    for (long moment = span->m_First; moment <= span->m_Last && moments.size() < 6;
         moment += std::max(span->m_Step, 1L)) {
      moments.push_back(Show(moment).substr(8, 8));
    }
  }
  return moments;
}

}  // namespace

TEST(StartTriggers, BeginAtTheFirstStartToCome) {
  const VirtualTime::Zone zone(TestSupport::NewYork);
  const auto triggers = TriggersFrom(TwoMornings(), "02 08:00:00");
  ASSERT_EQ(1U, triggers.size());
  EXPECT_EQ(Local("2026-03-02 08:00:00"), triggers[0].m_Begin);
  EXPECT_EQ(Local("2026-03-03 08:00:00"), TriggersFrom(TwoMornings(), "02 09:00:01")[0].m_Begin);
  EXPECT_EQ(1U, TriggersFrom(TwoMornings(), "02 09:00:01").size());
  EXPECT_EQ(Local("2026-03-09 08:00:00"), TriggersFrom(TwoMornings(), "04 08:10:00")[0].m_Begin);
}

TEST(StartTriggers, BringTheRestOfRepetitionsUnderWay) {
  const VirtualTime::Zone zone(TestSupport::NewYork);
  EXPECT_THAT(FirstRunsFrom(TwoMornings(), "02 08:20:01"),
              ElementsAre("02 08:40", "02 09:00", "03 08:00", "03 08:20", "03 08:40", "03 09:00"));
  EXPECT_THAT(FirstRunsFrom(TwoMornings(), "02 08:20:00"),
              ElementsAre("02 08:20", "02 08:40", "02 09:00", "03 08:00", "03 08:20", "03 08:40"));
  EXPECT_THAT(FirstRunsFrom(TwoMornings(), "02 08:40:01"),
              ElementsAre("02 09:00", "03 08:00", "03 08:20", "03 08:40", "03 09:00", "09 08:00"));
}

TEST(StartTriggers, EndWithTheirRule) {
  const VirtualTime::Zone zone(TestSupport::NewYork);
  StartRule rule = TwoMornings();
  rule.m_Rule.m_End = Local("2026-03-02 08:30:00");
  EXPECT_THAT(FirstRunsFrom(rule, "02 08:10:00"), ElementsAre("02 08:20"));
  EXPECT_THAT(TriggersFrom(rule, "02 08:25:00"), IsEmpty());
}

TEST(StartTriggers, RunAlsoOnAFirstDayThatLacksTheTime) {
  const VirtualTime::Zone zone(TestSupport::NewYork);
  StartRule rule;
  rule.m_Rule.m_Type = TriggerRule::MonthlyByDate;
  rule.m_Rule.m_DaysOfMonth = 3L << 7;  // the 8th and the 9th
  rule.m_Rule.m_MonthsOfYear = 0xFFF;
  rule.m_Clock = 2 * Hour + 30 * Minute;
  EXPECT_THAT(FirstRunsFrom(rule, "08 00:00:00"), ElementsAre("08 03:30", "09 02:30"));
}

}  // namespace NoxAgentTest
