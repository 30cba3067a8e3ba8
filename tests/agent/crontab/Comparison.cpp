// nox_crontab_comparison: crontab lines by the real scheduler, and by the model of it that they are
// held against elsewhere. Around the changes of the clocks, with all the triggers of a line.
//
// Exit status 0 when they agree on every run, 1 otherwise.
#include "agent/crontab/CronRules.h"
#include "agent/crontab/HourCuts.h"
#include "agent/schedule/SchedulerRuns.h"
#include "agent/schedule/StartTriggers.h"
#include "agent/simulation/Simulation.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

using namespace NoxAgent;
using namespace NoxAgentTest;
using namespace TestSupport;

namespace {

constexpr const char* Lines[] = {"*/10 * * * *",    "0,5,10,30 * * * *", "*/20 22-23,0-6 * * 1-5",
                                 "15,45 1-3 * * *", "30 2 * * *",        "59 23 * * *",
                                 "*/30 * 1 3,10 0", "0 */5 * * sun"};

struct Stretch {
  const char* m_Zone;
  const char* m_From;  ///< local time
  const char* m_Until;
};
constexpr Stretch Stretches[] = {{Utc, "2026-03-01 10:07:23", "2026-03-05 00:00:00"},
                                 {NewYork, "2026-03-05 10:07:23", "2026-03-10 00:00:00"},
                                 {NewYork, "2026-10-30 00:00:00", "2026-11-03 00:00:00"},
                                 {LordHowe, "2026-10-02 23:59:59", "2026-10-06 00:00:00"},
                                 {LordHowe, "2026-04-03 02:15:00", "2026-04-07 00:00:00"}};

std::string Document(const std::vector<TriggerRule>& rules) {
  std::string triggers;
  for (const TriggerRule& rule : rules) {
    const std::string begin =
        BaseSDK::ADateTime(rule.m_Begin).ToString("%Y/%m/%d %H:%M:%S").ToUtf8();
    triggers +=
        TriggerText(static_cast<int>(rule.m_Type),
                    Begin(begin) + Element("DaysOfWeek", rule.m_DaysOfWeek) +
                        Element("DaysOfMonth", rule.m_DaysOfMonth) +
                        Element("MonthsOfYear", rule.m_MonthsOfYear) + Element("Week", rule.m_Week),
                    "Interval=\"" + std::to_string(rule.m_IntervalSeconds / Minute) +
                        "\" Duration=\"" + std::to_string(rule.m_DurationSeconds / Minute) + "\"");
  }
  return TaskText(triggers);
}

std::vector<long> RunsOfScheduler(const std::string& document, long from, long until) {
  SimulationRequest request;
  request.m_Documents.push_back({"task", document});
  request.m_From = from;
  request.m_To = until;
  std::vector<long> runs;
  for (const SimulationEvent& event : Simulate(request)) {
    if (event.m_Kind == SimulationEvent::Kind::Run) {
      runs.push_back(event.m_Time);
    }
  }
  return runs;
}

std::vector<long> RunsOfModel(const LocalCalendar& calendar, const std::vector<TriggerRule>& rules,
                              long from, long until) {
  std::vector<SchedulerTrigger> triggers;
  for (const TriggerRule& rule : rules) {
    triggers.emplace_back(rule, calendar);
  }
  SchedulerRuns::Setting setting;
  setting.m_From = setting.m_Reading = from;
  setting.m_Until = until;
  SchedulerRuns model(calendar, std::move(triggers), setting);
  std::vector<long> runs;
  while (const auto span = model.Next()) {
    for (long run = span->m_First; run <= span->m_Last; run += std::max(1L, span->m_Step)) {
      runs.push_back(run);
    }
  }
  return runs;
}

bool Agrees(const char* line, const Stretch& stretch) {
  const VirtualTime::Zone zone(stretch.m_Zone);
  const long from = Local(stretch.m_From);
  const long until = Local(stretch.m_Until);
  const LocalCalendar calendar(from - Day);
  const auto expression = CronExpression::Parse(line);
  const auto rules =
      MakeCronRules(std::get<CronExpression>(expression), FindHourCuts(calendar, from));
  const auto triggers = StartTriggers(std::get<std::vector<StartRule>>(rules), calendar, from);
  const std::vector<long> expected = RunsOfScheduler(Document(triggers), from, until);
  const std::vector<long> found = RunsOfModel(calendar, triggers, from, until);
  if (expected == found) {
    return true;
  }
  const auto [one, other] =
      std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
  std::cout << line << " in " << stretch.m_Zone << ": the scheduler runs at "
            << (one == expected.end() ? "no time more" : Show(*one)) << ", the model at "
            << (other == found.end() ? "no time more" : Show(*other)) << "\n";
  return false;
}

}  // namespace

int main() {
  bool agrees = true;
  for (const Stretch& stretch : Stretches) {
    for (const char* const line : Lines) {
      agrees = Agrees(line, stretch) && agrees;
    }
  }
  return agrees ? EXIT_SUCCESS : EXIT_FAILURE;
}
