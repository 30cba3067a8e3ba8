#include "agent/client/ComingRuns.h"

#include "agent/client/Simulator.h"
#include "agent/simulation/SimulationEvent.h"

#include <BaseSDK/ALong32.h>

namespace NoxAgent {

std::vector<long> ComingRuns(const std::string& taskXml, long now, unsigned count) {
  constexpr long SearchSeconds = 630720000;  // as far as the scheduler itself looks ahead
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Next;
  request.m_Documents.push_back({"task", taskXml});
  request.m_From = now;
  request.m_To = BaseSDK::Add32(now, SearchSeconds);
  request.m_Count = count;
  std::vector<long> runs;
  for (const Json& line : AskSimulator(request)) {
    if (line.Find("searchedUntil") == nullptr) {
      runs.push_back(SimulationEventFrom(line).m_Time);
    }
  }
  return runs;
}

}  // namespace NoxAgent
