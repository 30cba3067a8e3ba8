#include "tests/agent/phrase/RandomPhrase.h"

#include "agent/schedule/SchedulerRuns.h"
#include "tests/support/LocalTimes.h"

#include <algorithm>

namespace NoxAgentTest {

using NoxAgent::LocalCalendar;
using NoxAgent::NoTime;
using NoxAgent::PhraseRule;
using NoxAgent::SchedulerRuns;
using NoxAgent::SchedulerTrigger;
using NoxAgent::TriggerRule;
using Simulation::Random;
using TestSupport::Day;
using TestSupport::Hour;
using TestSupport::Minute;
using Days = PhraseRule::Days;

namespace {

// None from 23:00 on: behind a run so late the scheduler passes over the starts of a day of 23
// hours.
long RandomClock(Random& random) {
  return random.OneOf({0L, 30 * Minute, 2 * Hour + 30 * Minute, 6 * Hour, 8 * Hour, 12 * Hour + 15,
                       22 * Hour, 22 * Hour + 30 * Minute});
}

void ChooseDays(Random& random, PhraseRule& rule) {
  rule.m_Days = random.OneOf({Days::EveryDays, Days::EveryDays, Days::EveryWeeks, Days::EveryWeeks,
                              Days::MonthDays, Days::LastDay, Days::MonthWeek, Days::Ordinal});
  const bool isCounted = rule.m_Days == Days::EveryDays || rule.m_Days == Days::EveryWeeks;
  rule.m_Count = isCounted && random.Percent(40) ? random.Between(2, 5) : 1;
  const bool hasDates = rule.m_Days == Days::MonthDays || rule.m_Days == Days::LastDay;
  rule.m_Weekdays = rule.m_Days == Days::EveryDays || hasDates
                        ? PhraseRule::AllWeekdays
                        : random.OneOf({62L, 65L, 2L, 1L, 34L, random.Between(1, 127)});
  if (rule.m_Days == Days::Ordinal) {
    rule.m_Weekdays = 1L << random.Between(0, 6);
  }
  rule.m_MonthDays = rule.m_Days == Days::MonthDays
                         ? random.OneOf({1L, 16385L, 1L << 27, random.Between(1, 0x7FFFFFFF)})
                         : 0;
  rule.m_Months =
      rule.m_Count == 1 && random.Percent(50) ? random.Between(1, 4095) : PhraseRule::AllMonths;
  rule.m_Week =
      rule.m_Days == Days::MonthWeek || rule.m_Days == Days::Ordinal ? random.Between(1, 5) : 1;
}

void ChooseTimes(Random& random, PhraseRule& rule) {
  const bool isPlain = (rule.m_Days == Days::EveryDays || rule.m_Days == Days::EveryWeeks) &&
                       rule.m_Count == 1 && rule.m_Months == PhraseRule::AllMonths;
  if (isPlain && random.Percent(15)) {
    rule.m_IsAllDay = true;
    rule.m_Interval = random.OneOf({10 * Minute, 30 * Minute, Hour, 2 * Hour, 6 * Hour});
    return;
  }
  rule.m_Clocks = {RandomClock(random)};
  if (random.Percent(30)) {
    // Inside the day, so that it is no matter which days follow.
    rule.m_Clocks = {random.OneOf({30 * Minute, 8 * Hour, 12 * Hour})};
    rule.m_Interval = random.OneOf({10 * Minute, 30 * Minute, 7 * Minute, 90L});
    rule.m_Duration = random.OneOf({2 * Hour, 90 * Minute, 7 * Hour});
    rule.m_Stops = random.Percent(20);
    return;
  }
  if (random.Percent(30)) {
    rule.m_Clocks.push_back(RandomClock(random));
  }
  if (random.Percent(10)) {
    rule.m_Stops = true;
    rule.m_Duration = 5 * Hour;
  }
  std::sort(rule.m_Clocks.begin(), rule.m_Clocks.end());
  rule.m_Clocks.erase(std::unique(rule.m_Clocks.begin(), rule.m_Clocks.end()), rule.m_Clocks.end());
}

}  // namespace

PhraseRule RandomPhraseRule(Random& random, const LocalCalendar& calendar, long now) {
  PhraseRule rule;
  if (random.Percent(10)) {
    rule.m_Days = Days::Once;
    const long day = calendar.DayOf(now) + random.Between(2, 300);
    rule.m_From = calendar.MomentOf(day, 12 * Hour);
    rule.m_Clocks = {12 * Hour};
    return rule;
  }
  ChooseDays(random, rule);
  ChooseTimes(random, rule);
  const long today = calendar.DayOf(now);
  if (random.Percent(30)) {
    rule.m_From = calendar.MomentOf(today + random.Between(-100, 200), 0);
  }
  if (random.Percent(20)) {
    rule.m_Until = calendar.MomentOf(today + random.Between(250, 365), Day - 1);
  }
  return rule;
}

std::vector<long> RunsOf(const std::vector<TriggerRule>& triggers, const LocalCalendar& calendar,
                         long from, long until) {
  std::vector<SchedulerTrigger> models;
  for (const TriggerRule& rule : triggers) {
    models.emplace_back(rule, calendar);
  }
  SchedulerRuns::Setting setting;
  setting.m_From = from;
  setting.m_Until = until;
  setting.m_Reading = 1000;  // the same for all of a task's lives
  SchedulerRuns model(calendar, models, setting);
  std::vector<long> runs;
  while (const auto span = model.Next()) {
    runs.push_back(span->m_First);
    for (long run = span->m_First + span->m_Step; span->m_Step != 0 && run <= span->m_Last;
         run += span->m_Step) {
      runs.push_back(run);
    }
  }
  return runs;
}

}  // namespace NoxAgentTest
