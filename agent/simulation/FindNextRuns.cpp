#include "agent/simulation/SimulatedAgent.h"
#include "agent/simulation/Simulation.h"

#include <VirtualTime/VirtualClock.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace NoxAgent {

using BaseSDK::AString;
using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;

namespace {

constexpr long Day = 86400;
constexpr unsigned AnyNumber = std::numeric_limits<unsigned>::max();

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
    const long moment = m_Request.m_Moment.value_or(m_Request.m_From);
    if (moment > m_Request.m_From) {
      if (!GoOn(moment - 1, AnyNumber)) {
        return std::nullopt;
      }
      m_RunsBefore = m_Agent.Log().Runs();
    }
    if (!GoOn(m_Request.m_To, m_RunsBefore + m_Request.m_Count)) {
      return std::nullopt;
    }
    return Answer();
  }

 private:
  // Until `end`, or so many runs, or no run can come any more. False when a run was missed.
  bool GoOn(long end, unsigned runs) {
    m_End = end;
    m_Runs = runs;
    while (!m_IsOver && IsGoingOn()) {
      const unsigned before = m_Agent.Log().Runs();
      RunDay();
      if (m_Agent.Log().Runs() != before || !IsGoingOn()) {
        continue;
      }
      const long next = NextRun();
      m_IsOver = next <= 0;
      if (!m_IsOver && m_LeavesOutDays && !LeaveOutDaysBefore(next)) {
        return false;
      }
    }
    return true;
  }

  bool IsGoingOn() { return m_Agent.Log().Runs() < m_Runs && m_Clock.Now() < m_End; }

  // From one wake-up of the scheduler to the next, to stop at the last run that is wanted.
  void RunDay() {
    const long end = m_End - m_Clock.Now() > Day ? m_Clock.Now() + Day : m_End;
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
    const long gap = std::min(next, m_End) - Day - m_Clock.Now();
    if (gap <= Day) {
      return true;
    }
    const unsigned runs = m_Agent.Log().Runs();
    m_Clock.StepWallClock(gap);
    m_Clock.RunUntil(m_Clock.Now());
    return m_Agent.Log().Runs() == runs;
  }

  NextRuns Answer() {
    NextRuns answer{{}, m_IsOver ? m_Request.m_To : m_Clock.Now()};
    unsigned runs = 0;
    for (const SimulationEvent& event : m_Agent.Log().Events()) {
      if (event.m_Kind == Kind::Run && runs++ >= m_RunsBefore &&
          answer.m_Runs.size() < m_Request.m_Count) {
        answer.m_Runs.push_back(event);
      }
    }
    return answer;
  }

  const SimulationRequest& m_Request;
  const bool m_LeavesOutDays;
  VirtualClock& m_Clock = VirtualClock::Instance();
  SimulatedAgent m_Agent;
  long m_End = 0;
  unsigned m_Runs = 0;
  unsigned m_RunsBefore = 0;  // those before the moment that is asked about
  bool m_IsOver = false;
};

}  // namespace

NextRuns FindNextRuns(const SimulationRequest& request) {
  if (const auto quick = Search(request, true).Find()) {
    return *quick;
  }
  return *Search(request, false).Find();
}

}  // namespace NoxAgent
