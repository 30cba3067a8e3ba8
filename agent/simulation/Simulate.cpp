#include "agent/simulation/SimulatedAgent.h"
#include "agent/simulation/Simulation.h"

#include <VirtualTime/VirtualClock.h>

#include <algorithm>
#include <vector>

namespace NoxAgent {

using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;
using Span = SimulationRequest::Span;

namespace {

// Sorted, and those that touch or overlap made one, so that the first of them does not open what
// the second still closes.
std::vector<Span> Joined(std::vector<Span> spans) {
  std::sort(spans.begin(), spans.end());
  std::vector<Span> joined;
  for (const Span& span : spans) {
    if (joined.empty() || span.first > joined.back().second) {
      joined.push_back(span);
    } else {
      joined.back().second = std::max(joined.back().second, span.second);
    }
  }
  return joined;
}

// Whether the gate is open from the beginning.
bool PlanGate(const SimulationRequest& request, SimulatedAgent& agent) {
  VirtualClock& clock = VirtualClock::Instance();
  bool isOpen = true;
  for (const auto& [first, last] : Joined(request.m_GateClosed)) {
    if (last <= request.m_From) {
      continue;
    }
    isOpen = isOpen && first > request.m_From;
    clock.At(first, [&agent] { agent.CloseGate(); });
    clock.At(last, [&agent] { agent.OpenGate(); });
  }
  return isOpen;
}

void PlanClockSteps(const SimulationRequest& request, SimulatedAgent& agent) {
  for (const SimulationRequest::ClockStep& step : request.m_ClockSteps) {
    if (step.m_At < request.m_From) {
      continue;
    }
    VirtualClock::Instance().At(step.m_At, [&agent, step] {
      // Noted first: the step wakes the scheduler, whose thread then notes what it does.
      SimulationEvent event;
      event.m_Kind = Kind::ClockSet;
      event.m_Seconds = step.m_Seconds;
      agent.Log().Add(event);
      VirtualClock::Instance().StepWallClock(step.m_Seconds);
    });
  }
}

}  // namespace

std::vector<SimulationEvent> Simulate(const SimulationRequest& request) {
  SimulatedAgent agent(request);
  const bool isOpen = PlanGate(request, agent);
  PlanClockSteps(request, agent);
  // After the plans, for it wakes the scheduler: what is planned for one moment keeps its order.
  if (isOpen) {
    agent.FinishStart();
  }
  VirtualClock::Instance().RunUntil(request.m_To);
  return agent.Log().Events();
}

}  // namespace NoxAgent
