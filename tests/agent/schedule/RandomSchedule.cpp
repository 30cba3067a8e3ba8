#include "tests/agent/schedule/RandomSchedule.h"

#include "tests/agent/simulation/TaskText.h"
#include "tests/simulation/Random.h"
#include "tests/support/LocalTimes.h"

namespace NoxAgentTest {

using NoxAgent::NoTime;
using NoxAgent::TriggerRule;
using Simulation::Random;

namespace {

using TestSupport::Day;
using TestSupport::Minute;

std::string Written(long moment, const char* format) {
  return BaseSDK::ADateTime(moment).ToString(format).ToUtf8();
}

// The moment that is read again from what is written of this one.
long AsWritten(long moment) {
  return Local(Written(moment, "%Y-%m-%d %H:%M:%S"));
}

std::string RandomClock(Random& random) {
  if (random.Percent(25)) {
    return Written(random.Between(0, Day - 1), "%H:%M:%S");
  }
  return random.OneOf({"00:00:00", "00:30:00", "01:00:00", "01:30:00", "02:00:00", "02:30:00",
                       "03:00:00", "07:30:00", "08:00:00", "12:00:00", "22:00:00", "23:00:00",
                       "23:30:00", "23:59:59"});
}

// In minutes, as documents hold durations.
long RandomDuration(Random& random) {
  if (random.Percent(20)) {
    return random.Between(1, 3000);
  }
  return random.OneOf({30, 60, 90, 120, 240, 480, 720, 1380, 1410, 1430, 1435, 1440, 1500, 2880});
}

long RandomInterval(Random& random, long durationSeconds) {
  const long interval = random.Percent(20)
                            ? random.Between(120, 7200)
                            : random.OneOf({5 * Minute, 10 * Minute, 30 * Minute, 60 * Minute,
                                            90 * Minute, 7 * Minute, 240 * Minute});
  // A few hundred repetitions at most: the scheduler rewrites the document at each.
  return std::max(interval, durationSeconds / 300);
}

TriggerRule RandomRule(Random& random, long change) {
  TriggerRule rule;
  rule.m_Type = random.OneOf({0, 1, 1, 1, 2, 2, 2, 3, 4, -1, -2});
  const long beginDay = change - random.OneOf({2, 6, 20, 40, 400, -2}) * Day;
  rule.m_Begin = Local(Written(beginDay, "%Y-%m-%d ") + RandomClock(random));
  if (random.Percent(50)) {
    rule.m_DurationSeconds = RandomDuration(random) * Minute;
  }
  if (random.Percent(50)) {
    rule.m_IntervalSeconds = RandomInterval(random, rule.m_DurationSeconds);
  }
  if (random.Percent(20)) {
    rule.m_End = AsWritten(change + random.Between(-5, 5) * Day + random.Between(0, Day));
  }
  rule.m_DaysInterval = random.OneOf({1, 1, 1, 2, 3});
  rule.m_WeeksInterval = random.OneOf({1, 1, 2, 3});
  rule.m_DaysOfWeek = random.OneOf({127L, 62L, 65L, random.Between(1, 127)});
  rule.m_DaysOfMonth = random.OneOf({0x7FFFFFFFL, 0x7FFFFFFFL, random.Between(1, 0x7FFFFFFF)});
  rule.m_MonthsOfYear = random.OneOf({4095L, 4095L, random.Between(1, 4095)});
  rule.m_Week = random.Between(1, 5);
  return rule;
}

std::string TextOf(const TriggerRule& rule) {
  std::string children = Begin(Written(rule.m_Begin, "%Y/%m/%d %H:%M:%S"));
  if (rule.m_End != NoTime) {
    children += "<EndDate>" + Written(rule.m_End, "%Y/%m/%d %H:%M:%S") + "</EndDate>";
  }
  children += Element("DaysInterval", rule.m_DaysInterval) +
              Element("WeeksInterval", rule.m_WeeksInterval) +
              Element("DaysOfWeek", rule.m_DaysOfWeek) +
              Element("DaysOfMonth", rule.m_DaysOfMonth) +
              Element("MonthsOfYear", rule.m_MonthsOfYear) + Element("Week", rule.m_Week);
  return TriggerText(static_cast<int>(rule.m_Type), children,
                     "IntervalUnit=\"SECOND\" Interval=\"" +
                         std::to_string(rule.m_IntervalSeconds) + "\" Duration=\"" +
                         std::to_string(rule.m_DurationSeconds / Minute) + "\"");
}

}  // namespace

const std::vector<ClockChangeCase>& ClockChangeCases() {
  static const std::vector<ClockChangeCase> Cases = {{"America/New_York", "2027-03-14 02:00:00"},
                                                     {"America/New_York", "2026-11-01 02:00:00"},
                                                     {"Europe/Berlin", "2027-03-28 02:00:00"},
                                                     {"Europe/Berlin", "2026-10-25 03:00:00"},
                                                     {"Australia/Lord_Howe", "2026-10-04 02:00:00"},
                                                     {"Australia/Lord_Howe", "2027-04-04 02:00:00"},
                                                     {"Pacific/Apia", "2011-12-31 00:00:00"},
                                                     {"Pacific/Apia", "2011-09-24 03:00:00"},
                                                     {"Africa/Casablanca", "2026-02-15 03:00:00"},
                                                     {"Africa/Casablanca", "2026-03-22 02:00:00"},
                                                     {"Africa/Cairo", "2026-04-24 00:00:00"},
                                                     {"Africa/Cairo", "2026-10-30 00:00:00"},
                                                     {"UTC", "2026-07-01 00:00:00"}};
  return Cases;
}

RandomSchedule::RandomSchedule(std::uint64_t seed, const ClockChangeCase& clockChange) {
  Random random(seed);
  const long change = Local(clockChange.m_Change);
  std::string texts;
  for (long count = random.OneOf({1, 1, 1, 2, 3}); count > 0; --count) {
    m_Triggers.push_back(RandomRule(random, change));
    texts += TextOf(m_Triggers.back());
  }
  m_Setting.m_From = change - random.Between(0, 4 * Day);
  m_Setting.m_Reading = m_Setting.m_From;
  m_Setting.m_Until = change + random.Between(5, 16) * Day;
  std::string lastRun;
  if (random.Percent(60)) {
    m_Setting.m_LastRun = AsWritten(m_Setting.m_From - random.Between(1, 3 * Day));
    lastRun = Written(m_Setting.m_LastRun, "%Y-%m-%d %H:%M:%S") + " Ok";
  }
  m_Document = TaskText(texts, lastRun);
}

}  // namespace NoxAgentTest
