// Crontab lines against the runs of the rules that are made of them, for ten years; those that run
// every few minutes for a year and a month.
#include "agent/crontab/CronRules.h"
#include "agent/crontab/HourCuts.h"
#include "agent/schedule/RunDifferences.h"
#include "agent/schedule/StartTriggers.h"
#include "tests/agent/crontab/Crontabs.h"
#include "tests/agent/crontab/PlainCron.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <memory>

namespace NoxAgentTest {

using namespace NoxAgent;
using namespace TestSupport;

namespace {

// A zone and its years; made once, for that takes longest.
struct ZoneYears {
  explicit ZoneYears(const char* tz)
      : m_Tz(tz),
        m_Zone(tz),
        m_From(Local("2026-03-05 10:07:23")),
        m_Calendar(m_From - 7 * Day),
        m_OneYear(m_From, m_From + 400 * Day),
        m_TenYears(m_From, m_From + 3660 * Day),
        m_Cuts(FindHourCuts(m_Calendar, m_From)) {}

  const char* const m_Tz;
  const VirtualTime::Zone m_Zone;
  const long m_From;
  const LocalCalendar m_Calendar;
  const HalfHours m_OneYear;
  const HalfHours m_TenYears;
  const long m_Cuts;
};

class Translation : public testing::TestWithParam<const char*> {
 protected:
  static void TearDownTestSuite() { s_Years.reset(); }

  Translation() {
    if (s_Years == nullptr || s_Years->m_Tz != GetParam()) {
      s_Years.reset();
      s_Years = std::make_unique<ZoneYears>(GetParam());
    }
  }

  // Tells all that is not allowed.
  static void Compare(const std::string& text, const HalfHours& span) {
    for (const RunDifference& difference : Differences(text, span).m_Days) {
      EXPECT_TRUE(IsAllowed(difference.m_Kind, difference.m_First) &&
                  IsAllowed(difference.m_Kind, difference.m_Last))
          << text << ": "
          << (difference.m_Kind == RunDifference::Kind::Missing ? "missing " : "extra ")
          << difference.m_Count << " from " << Show(difference.m_First) << " to "
          << Show(difference.m_Last);
    }
  }

  static RunDifferences Differences(const std::string& text, const HalfHours& span) {
    const auto rules = MakeCronRules(Expression(text), s_Years->m_Cuts);
    if (const auto* const refusal = std::get_if<CronRefusal>(&rules)) {
      ADD_FAILURE() << text << ": " << refusal->m_Reason;
      return {};
    }
    SchedulerRuns::Setting setting;
    setting.m_From = setting.m_Reading = span.From();
    setting.m_Until = span.Until();
    SchedulerRuns runs(s_Years->m_Calendar, Triggers(std::get<std::vector<StartRule>>(rules)),
                       setting);
    const std::vector<long> expected = PlainCronMinutes(text, span);
    EXPECT_FALSE(expected.empty()) << text;
    auto next = expected.begin();
    return FindRunDifferences(
        [&] { return next == expected.end() ? std::nullopt : std::optional(*next++); }, runs,
        s_Years->m_Calendar, 10000);
  }

  // The closed list. Of a day whose clocks are set forward, what lies in the gap comes behind it,
  // and a start so late that a step of 24 hours leaps over it is lost. Of a day whose clocks are
  // set back, what is shown for the second time does not come.
  static bool IsAllowed(RunDifference::Kind kind, long moment) {
    const LocalCalendar::Change* const change = ChangeOfDay(moment);
    if (change == nullptr) {
      return false;
    }
    const long shift = change->m_After - change->m_Before;
    if (shift < 0) {
      return kind == RunDifference::Kind::Missing && moment >= change->m_Moment &&
             moment < change->m_Moment - shift;
    }
    if (moment >= change->m_Moment && moment < change->m_Moment + Hour) {
      return kind == RunDifference::Kind::Extra || moment < change->m_Moment + Hour - shift;
    }
    return kind == RunDifference::Kind::Missing &&
           s_Years->m_Calendar.ClockAt(moment) >= Day - shift;
  }

  static const LocalCalendar::Change* ChangeOfDay(long moment) {
    const LocalCalendar& calendar = s_Years->m_Calendar;
    const LocalCalendar::Change* const change =
        calendar.ChangeAfter(calendar.MomentOf(calendar.DayOf(moment), 0) - 1);
    const bool isOfDay =
        change != nullptr && calendar.DayOf(change->m_Moment) == calendar.DayOf(moment);
    return isOfDay ? change : nullptr;
  }

  static std::vector<SchedulerTrigger> Triggers(const std::vector<StartRule>& rules) {
    std::vector<SchedulerTrigger> triggers;
    for (const TriggerRule& trigger : StartTriggers(rules, s_Years->m_Calendar, s_Years->m_From)) {
      triggers.emplace_back(trigger, s_Years->m_Calendar);
    }
    return triggers;
  }

  static std::unique_ptr<ZoneYears> s_Years;
};

std::unique_ptr<ZoneYears> Translation::s_Years;

// What crontabs say, and what they might.
constexpr const char* FrequentLines[] = {"* * * * *",
                                         "*/2 * * * *",
                                         "*/5 * * * *",
                                         "*/7 * * * *",
                                         "*/10 * * * *",
                                         "*/15 * * * *",
                                         "*/30 * * * *",
                                         "5-59/10 * * * *",
                                         "1-59/2 * * * *",
                                         "0,5,10,30 * * * *",
                                         "09,39 * * * *",
                                         "5-55/10 * * * *",
                                         "0,1,2,57,58,59 * * * *",
                                         "*/10 8-17 * * *",
                                         "*/20 9-17 * * 1-5",
                                         "*/15 22-23,0-6 * * 1-5",
                                         "*/5 2 * * *",
                                         "*/5 1 * * *",
                                         "*/7 23 * * *",
                                         "*/9 0-4 * * *"};

constexpr const char* OtherLines[] = {
    // Some hours of the day.
    "0 * * * *", "17 * * * *", "59 * * * *", "0 */2 * * *", "0 */3 * * *", "0 */5 * * *",
    "30 4-22/2 * * *", "0 8,12,18 * * *", "0 22-23,0-6 * * *", "0 0,12 * * *", "15,45 1-3 * * *",
    // Once a day.
    "0 0 * * *", "25 6 * * *", "30 1 * * *", "0 2 * * *", "15 2 * * *", "30 2 * * *", "45 2 * * *",
    "0 3 * * *", "0 23 * * *", "30 23 * * *", "59 23 * * *",
    // Weekdays.
    "47 6 * * 7", "30 3 * * 0", "57 0 * * 0", "10 3 * * *", "0 9 * * mon-fri", "0 9 * * sat,sun",
    "30 2 * * sun", "30 23 * * sun", "*/30 8-18 * * 1,3,5", "0 5 * * */2", "0 12 * * 5-7",
    // Dates.
    "52 6 1 * *", "0 0 1 1 *", "0 4 1,15 * *", "0 4 */2 * *", "0 4 31 * *", "0 4 29 2 *",
    "0 4 29-31 * *", "0 6 1-7 * *", "0 6 10-20/5 * *", "*/10 * 1 * *", "30 23 28-31 * *",
    // Months.
    "0 7 * 6-8 *", "*/30 * * 12 *", "0 7 1 */3 *", "0 7 15 jan,jul *", "0 8 * 3 1",
    "0 8 * 3,10 sun", "30 2 * mar,oct,nov 0", "*/15 9 * 1-6 1-5", "30 23 * 4,10 6,0",
    // A date or a weekday; and both, in whole weeks.
    "0 0 13 * 5", "0 6 1,15 * 1", "0 6 1-7 * 1", "*/20 6 1 3 mon", "0 0 30 2 0", "0 0 1-31 * 2",
    "0 3 7-13 * */7", "0 3 1-13,28-31 * */7"};

}  // namespace

TEST_P(Translation, RunsAsTheCrontabSays) {
  for (const char* const text : FrequentLines) {
    Compare(text, s_Years->m_OneYear);
  }
  for (const char* const text : OtherLines) {
    Compare(text, s_Years->m_TenYears);
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, Translation,
                         testing::Values(Utc, NewYork, LordHowe, SaoPaulo, Dublin));

}  // namespace NoxAgentTest
