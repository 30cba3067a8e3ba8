#include "agent/simulation/SimulatedAgent.h"
#include "agent/simulation/Simulation.h"

#include <VirtualTime/VirtualClock.h>

#include <algorithm>
#include <optional>

namespace NoxAgent {

using BaseSDK::AString;
using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;

namespace {

constexpr long Day = 86400;

// A search by running the scheduler a day at a time. What makes it quick is leaving out days; what
// keeps it right is that nothing may turn out to be due after such a gap.
class Search {
 public:
  Search(const SimulationRequest& request, bool leavesOutDays)
      : m_Request(request), m_LeavesOutDays(leavesOutDays), m_Agent(request) {}

  // Nothing when a run would have begun within the days that were left out.
  std::optional<NextRuns> Find() {
    m_Agent.FinishStart();
    m_Clock.RunUntil(m_Request.m_From);
    while (IsGoingOn()) {
      const unsigned runs = m_Agent.Log().Runs();
      RunDay();
      if (m_Agent.Log().Runs() != runs || !IsGoingOn()) {
        continue;
      }
      const long next = NextRun();
      if (next <= 0) {
        return Answer(m_Request.m_To);
      }
      if (m_LeavesOutDays && !LeaveOutDaysBefore(next)) {
        return std::nullopt;
      }
    }
    return Answer(m_Clock.Now());
  }

 private:
  bool IsGoingOn() {
    return m_Agent.Log().Runs() < m_Request.m_Count && m_Clock.Now() < m_Request.m_To;
  }

  // From one wake-up of the scheduler to the next, to stop at the last run that is wanted.
  void RunDay() {
    const long end = m_Request.m_To - m_Clock.Now() > Day ? m_Clock.Now() + Day : m_Request.m_To;
    while (IsGoingOn() && m_Clock.Now() < end) {
      m_Clock.RunUntil(std::clamp(m_Clock.NextDeadline().value_or(end), m_Clock.Now() + 1, end));
    }
  }

  // By the scheduler's report; 0 for none, also when the task is gone.
  long NextRun() {
    const auto attributes = m_Agent.AttributesOf(m_Request.m_Documents.at(0).m_Id);
    return attributes ? AString::FromUtf8(attributes->at("t6")).ToLong() : 0;
  }

  bool LeaveOutDaysBefore(long next) {
    const long gap = std::min(next, m_Request.m_To) - Day - m_Clock.Now();
    if (gap <= Day) {
      return true;
    }
    const unsigned runs = m_Agent.Log().Runs();
    m_Clock.StepWallClock(gap);
    m_Clock.RunUntil(m_Clock.Now());
    return m_Agent.Log().Runs() == runs;
  }

  NextRuns Answer(long searchedUntil) {
    NextRuns answer{{}, searchedUntil};
    for (const SimulationEvent& event : m_Agent.Log().Events()) {
      if (event.m_Kind == Kind::Run && answer.m_Runs.size() < m_Request.m_Count) {
        answer.m_Runs.push_back(event);
      }
    }
    return answer;
  }

  const SimulationRequest& m_Request;
  const bool m_LeavesOutDays;
  VirtualClock& m_Clock = VirtualClock::Instance();
  SimulatedAgent m_Agent;
};

}  // namespace

NextRuns FindNextRuns(const SimulationRequest& request) {
  if (const auto quick = Search(request, true).Find()) {
    return *quick;
  }
  return *Search(request, false).Find();
}

}  // namespace NoxAgent
