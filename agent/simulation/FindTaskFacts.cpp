#include "agent/simulation/SimulatedAgent.h"
#include "agent/simulation/Simulation.h"

#include <BaseSDK/ALong32.h>
#include <VirtualTime/VirtualClock.h>

namespace NoxAgent {

using BaseSDK::AString;
using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;

namespace {

// Keys of the scheduler's report; see docs/plugins.md.
constexpr const char* LastRun = "t3";
constexpr const char* Enabled = "t5";
constexpr const char* TriggerRun = "tr";

long NumberIn(const SimulatedAgent::Attributes& attributes, const std::string& key) {
  const auto found = attributes.find(key);
  return found == attributes.end() ? 0 : AString::FromUtf8(found->second).ToLong();
}

void ReadDefinition(const SimulatedAgent::Attributes& attributes, TaskFacts& facts) {
  facts.m_Enabled = NumberIn(attributes, Enabled) != 0;
  facts.m_LastRun = NumberIn(attributes, LastRun);
  for (std::size_t i = 0; attributes.count(TriggerRun + std::to_string(i)) > 0; ++i) {
    const long run = NumberIn(attributes, TriggerRun + std::to_string(i));
    // A trigger that is due now reports this moment as its next run.
    facts.m_Triggers.push_back({run == facts.m_At, run});
  }
}

void ReadNextRuns(const SimulatedAgent::Attributes& attributes, TaskFacts& facts) {
  for (std::size_t i = 0; i < facts.m_Triggers.size(); ++i) {
    facts.m_Triggers[i].m_Next = NumberIn(attributes, TriggerRun + std::to_string(i));
  }
}

void ReadPass(const std::vector<SimulationEvent>& events, std::size_t first, TaskFacts& facts) {
  for (std::size_t i = first; i < events.size(); ++i) {
    if (events[i].m_Kind == Kind::Run) {
      facts.m_Run = events[i];
    }
    if (events[i].m_Kind == Kind::NoHandler) {
      facts.m_NoHandler = true;
    }
    if (events[i].m_Kind == Kind::Deleted) {
      facts.m_Deleted = true;
    }
  }
}

std::optional<long> Deletion(const std::vector<SimulationEvent>& events) {
  for (const SimulationEvent& event : events) {
    if (event.m_Kind == Kind::Deleted) {
      return event.m_Time;
    }
  }
  return std::nullopt;
}

// Works as usual up to the second before the moment, so that the moment's own pass can be looked at
// from both sides.
void PassTime(const SimulationRequest& request, TaskFacts& facts, SimulatedAgent& agent) {
  if (facts.m_At <= request.m_From) {
    return;
  }
  agent.FinishStart();
  VirtualClock::Instance().RunUntil(facts.m_At - 1);
  agent.CloseGate();
  VirtualClock::Instance().RunUntil(facts.m_At);
  facts.m_GoneSince = Deletion(agent.Log().Events());
}

void MakePass(const SimulationRequest& request, TaskFacts& facts, SimulatedAgent& agent) {
  const std::size_t before = agent.Log().Events().size();
  if (facts.m_At > request.m_From) {
    agent.OpenGate();
  } else {
    agent.FinishStart();
  }
  VirtualClock::Instance().RunUntil(facts.m_At);
  ReadPass(agent.Log().Events(), before, facts);
}

// The first run after the pass, when it is the reading that brings it about.
std::optional<long> DueByReading(long reading, SimulatedAgent& agent) {
  const std::size_t before = agent.Log().Events().size();
  VirtualClock::Instance().RunUntil(reading);
  const std::vector<SimulationEvent> events = agent.Log().Events();
  for (std::size_t i = before; i < events.size(); ++i) {
    if (events[i].m_Kind == Kind::Run) {
      const bool isByReading = events[i].m_Time == reading && events[i].m_NeverRun;
      return isByReading ? std::optional<long>(reading) : std::nullopt;
    }
  }
  return std::nullopt;
}

}  // namespace

TaskFacts FindTaskFacts(const SimulationRequest& request) {
  SimulatedAgent agent(request);
  const std::string task = request.m_Documents.at(0).m_Id;
  TaskFacts facts;
  facts.m_At = request.m_Moment.value_or(request.m_From);
  PassTime(request, facts, agent);
  if (const auto before = agent.AttributesOf(task)) {
    ReadDefinition(*before, facts);
  }
  MakePass(request, facts, agent);
  if (const auto after = agent.AttributesOf(task)) {
    ReadNextRuns(*after, facts);
  }
  const long reading =
      request.m_Reading.value_or(BaseSDK::Add32(request.m_From, SimulationRequest::CycleSeconds));
  if (facts.m_At < reading) {
    facts.m_DueByReading = DueByReading(reading, agent);
  }
  return facts;
}

}  // namespace NoxAgent
