#include "agent/simulation/SimulatedAgent.h"
#include "agent/simulation/Simulation.h"

#include <VirtualTime/VirtualClock.h>

namespace NoxAgent {

using BaseSDK::AString;
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

void ReadPass(const std::vector<SimulationEvent>& events, TaskFacts& facts) {
  for (const SimulationEvent& event : events) {
    if (event.m_Kind == Kind::Run) {
      facts.m_Run = event;
    }
    if (event.m_Kind == Kind::NoHandler) {
      facts.m_NoHandler = true;
    }
    if (event.m_Kind == Kind::Deleted) {
      facts.m_Deleted = true;
    }
  }
}

}  // namespace

TaskFacts FindTaskFacts(const SimulationRequest& request) {
  SimulatedAgent agent(request);
  const std::string task = request.m_Documents.at(0).m_Id;
  TaskFacts facts;
  facts.m_At = request.m_From;
  if (const auto before = agent.AttributesOf(task)) {
    ReadDefinition(*before, facts);
  }
  agent.FinishStart();
  VirtualTime::VirtualClock::Instance().RunUntil(request.m_From);
  ReadPass(agent.Log().Events(), facts);
  if (const auto after = agent.AttributesOf(task)) {
    ReadNextRuns(*after, facts);
  }
  return facts;
}

}  // namespace NoxAgent
