#include "agent/simulation/SimulationLog.h"

#include <BaseSDK/ALong32.h>

#include <ctime>
#include <utility>

namespace NoxAgent {

using BaseSDK::AMutexGuard;
using Kind = SimulationEvent::Kind;

void SimulationLog::Add(SimulationEvent event) {
  event.m_Time = BaseSDK::Add32(std::time(nullptr), event.m_Seconds);
  const AMutexGuard guard(m_Lock);
  if (event.m_Kind == Kind::Notification && CountAgain(event)) {
    return;
  }
  if (event.m_Kind == Kind::Run) {
    ++m_Runs;
  }
  m_Events.push_back(std::move(event));
}

void SimulationLog::Add(Kind kind) {
  SimulationEvent event;
  event.m_Kind = kind;
  Add(std::move(event));
}

std::vector<SimulationEvent> SimulationLog::Events() const {
  const AMutexGuard guard(m_Lock);
  return m_Events;
}

unsigned SimulationLog::Runs() const {
  const AMutexGuard guard(m_Lock);
  return m_Runs;
}

bool SimulationLog::CountAgain(const SimulationEvent& event) {
  for (auto past = m_Events.rbegin(); past != m_Events.rend() && past->m_Time == event.m_Time;
       ++past) {
    if (past->m_Kind != Kind::Notification || past->m_Code != event.m_Code ||
        past->m_Task != event.m_Task) {
      continue;
    }
    ++past->m_Count;
    return true;
  }
  return false;
}

}  // namespace NoxAgent
