#include "agent/schedule/ScheduleComparison.h"

#include "agent/schedule/SchedulerRuns.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/simulation/Random.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace NoxAgentTest {

using NoxAgent::LocalCalendar;
using NoxAgent::NoTime;
using NoxAgent::ScheduleDifference;
using NoxAgent::SchedulerRuns;
using NoxAgent::SchedulerTrigger;
using NoxAgent::TriggerRule;
using Simulation::Random;
using Kind = ScheduleDifference::Kind;

namespace {

using TestSupport::Day;
using TestSupport::Hour;
using TestSupport::Minute;
constexpr const char* Now = "2026-06-15 12:00:00";

/// What people write: full hours, usual intervals and durations.
TriggerRule UsualRule(Random& random, const LocalCalendar& calendar, long today) {
  TriggerRule rule;
  rule.m_Type = random.OneOf({0, 1, 1, 1, 2, 2, 2, 3, 4});
  const long clock = random.OneOf({0L, 30 * Minute, 2 * Hour, 6 * Hour, 8 * Hour, 12 * Hour,
                                   22 * Hour, 23 * Hour, 23 * Hour + 30 * Minute});
  rule.m_Begin = calendar.MomentOf(today + random.Between(1, 300), clock);
  rule.m_DaysInterval = random.OneOf({1, 1, 2, 3});
  rule.m_WeeksInterval = random.OneOf({1, 1, 2});
  rule.m_DaysOfWeek = random.OneOf({127L, 62L, 2L, 1L, random.Between(1, 127)});
  rule.m_DaysOfMonth = random.OneOf({1L, 16385L, 1L << 30});
  rule.m_MonthsOfYear = random.OneOf({4095L, 4095L, random.Between(1, 4095)});
  rule.m_Week = random.Between(1, 5);
  if (random.Percent(50)) {
    rule.m_IntervalSeconds = Minute * random.OneOf({10, 15, 30, 60, 120});
    rule.m_DurationSeconds = Minute * random.OneOf({60, 120, 240, 600, 1200, 1380, 1430, 1440});
  }
  return rule;
}

std::vector<long> Starts(const SchedulerTrigger& trigger, const LocalCalendar& calendar,
                         long until) {
  std::vector<long> starts;
  for (long day = trigger.BeginDay(); day <= calendar.DayOf(until); ++day) {
    const long start = trigger.StartOn(day);
    if (start != NoTime && start <= until && calendar.HasDay(day)) {
      starts.push_back(start);
    }
  }
  return starts;
}

/// All runs of the starts up to `until`: a period ends where the next one begins.
std::vector<long> RunsOf(const std::vector<long>& starts, const TriggerRule& rule, long until) {
  std::vector<long> runs;
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const long next = i + 1 < starts.size() ? starts[i + 1] : until + 1;
    const long end = rule.Repeats() ? starts[i] + rule.m_DurationSeconds : starts[i];
    const long step = rule.Repeats() ? rule.m_IntervalSeconds : Day;
    for (long run = starts[i]; run <= std::min({end, next - 1, until}); run += step) {
      runs.push_back(run);
    }
  }
  return runs;
}

std::vector<long> RunsOfModel(const SchedulerTrigger& trigger, const LocalCalendar& calendar,
                              long until, long reading) {
  const long begin = trigger.Rule().m_Begin;
  SchedulerRuns model(calendar, {trigger}, {begin, until, begin, reading});
  std::vector<long> runs{begin};
  while (const auto span = model.Next()) {
    for (long run = span->m_First; run <= span->m_Last; run += std::max(1L, span->m_Step)) {
      runs.push_back(run);
    }
  }
  return runs;
}

/// A run that is missing though nothing was told of; NoTime when there is none.
long MissingRun(const SchedulerTrigger& trigger, const LocalCalendar& calendar, long reading) {
  constexpr long TwoYears = 730 * Day;
  const TriggerRule& rule = trigger.Rule();
  const long until = rule.m_Begin + TwoYears;
  const auto wanted = RunsOf(Starts(trigger, calendar, until), rule, until);
  const auto found = RunsOfModel(trigger, calendar, until, reading);
  for (const long run : wanted) {
    // What a short day costs a period is not told.
    const bool isOrdinary =
        !rule.Repeats() || calendar.OffsetAt(run - 2 * Day) == calendar.OffsetAt(run + Day);
    if (isOrdinary && !std::binary_search(found.begin(), found.end(), run)) {
      return run;
    }
  }
  return NoTime;
}

bool TellsOfLoss(const std::vector<ScheduleDifference>& differences) {
  return std::any_of(differences.begin(), differences.end(), [](const ScheduleDifference& each) {
    return each.m_Kind == Kind::PassedOver || each.m_Kind == Kind::LateStart ||
           each.m_Kind == Kind::LostRepetition || each.m_Kind == Kind::LostPastMidnight;
  });
}

class ScheduleComparisonInZone : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(ScheduleComparisonInZone, IsSilentOnlyWhereTwoYearsOfRunsAreAsTheRuleSays) {
  const VirtualTime::Zone zone(GetParam());
  const long now = Local(Now);
  const LocalCalendar calendar(now - 366 * Day);
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    Random random(seed);
    const SchedulerTrigger trigger(UsualRule(random, calendar, calendar.DayOf(now)), calendar);
    if (TellsOfLoss(CompareSchedule(trigger, calendar, now))) {
      continue;
    }
    const long begin = trigger.Rule().m_Begin;
    for (const long reading : {begin - 1, begin + 1, begin + 1777}) {
      const long missing = MissingRun(trigger, calendar, reading);
      EXPECT_EQ(NoTime, missing) << "seed " << seed << ": " << Show(missing);
    }
  }
}

TEST_P(ScheduleComparisonInZone, TellsOfNoLossThatDoesNotHappen) {
  const VirtualTime::Zone zone(GetParam());
  const long now = Local(Now);
  const LocalCalendar calendar(now - 366 * Day);
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    Random random(seed);
    const SchedulerTrigger trigger(UsualRule(random, calendar, calendar.DayOf(now)), calendar);
    if (!TellsOfLoss(CompareSchedule(trigger, calendar, now))) {
      continue;
    }
    const long begin = trigger.Rule().m_Begin;
    const bool happens = MissingRun(trigger, calendar, begin - 1) != NoTime ||
                         MissingRun(trigger, calendar, begin + 1) != NoTime;
    EXPECT_TRUE(happens) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, ScheduleComparisonInZone,
                         testing::Values("EST5EDT,M3.2.0,M11.1.0", "CET-1CEST,M3.5.0,M10.5.0/3",
                                         "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "UTC0"));

}  // namespace NoxAgentTest
