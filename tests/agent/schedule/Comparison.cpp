#include "tests/agent/schedule/Comparison.h"

#include "agent/simulation/Simulation.h"
#include "tests/agent/schedule/RandomSchedule.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <algorithm>

namespace NoxAgentTest {

using NoxAgent::LocalCalendar;
using NoxAgent::SchedulerRuns;
using NoxAgent::SchedulerTrigger;

namespace {

using TestSupport::Day;

std::vector<long> RunsOfScheduler(const RandomSchedule& schedule) {
  NoxAgent::SimulationRequest request;
  request.m_Documents.push_back({"task", schedule.m_Document});
  request.m_From = schedule.m_Setting.m_From;
  request.m_To = schedule.m_Setting.m_Until;
  std::vector<long> runs;
  for (const NoxAgent::SimulationEvent& event : NoxAgent::Simulate(request)) {
    if (event.m_Kind == NoxAgent::SimulationEvent::Kind::Run) {
      runs.push_back(event.m_Time);
    }
  }
  return runs;
}

std::vector<long> RunsOfModel(const RandomSchedule& schedule) {
  const LocalCalendar calendar(schedule.m_Setting.m_From - 500 * Day);
  std::vector<SchedulerTrigger> triggers;
  for (const auto& rule : schedule.m_Triggers) {
    triggers.emplace_back(rule, calendar);
  }
  SchedulerRuns model(calendar, std::move(triggers), schedule.m_Setting);
  std::vector<long> runs;
  while (const auto span = model.Next()) {
    for (long run = span->m_First; run <= span->m_Last; run += std::max(1L, span->m_Step)) {
      runs.push_back(run);
    }
  }
  return runs;
}

// From a little before the first difference on.
std::string Tail(const std::vector<long>& runs, std::size_t difference) {
  std::string text;
  const std::size_t first = difference < 3 ? 0 : difference - 3;
  for (std::size_t i = first; i < std::min(runs.size(), difference + 4); ++i) {
    text += "  " + Show(runs[i]) + "\n";
  }
  return text;
}

}  // namespace

std::string CompareWithScheduler(std::uint64_t seed) {
  for (const ClockChangeCase& change : ClockChangeCases()) {
    const VirtualTime::Zone zone(change.m_Zone);
    const RandomSchedule schedule(seed, change);
    const std::vector<long> expected = RunsOfScheduler(schedule);
    const std::vector<long> found = RunsOfModel(schedule);
    if (found == expected) {
      continue;
    }
    const auto difference =
        std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    const auto index = static_cast<std::size_t>(difference.first - expected.begin());
    return "seed " + std::to_string(seed) + ", " + change.m_Zone + ", from " +
           Show(schedule.m_Setting.m_From) + " until " + Show(schedule.m_Setting.m_Until) + "\n" +
           schedule.m_Document + "\nscheduler:\n" + Tail(expected, index) + "model:\n" +
           Tail(found, index);
  }
  return {};
}

}  // namespace NoxAgentTest
