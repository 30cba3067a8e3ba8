// nox-simulate: reads a request from standard input, answers in lines of JSON on standard output.
// noxctl runs it; it is a program of its own because virtual time owns the time of its process.
#include "agent/simulation/Simulation.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ASystemZone.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>

namespace {

using NoxAgent::Json;
using NoxAgent::SimulationEvent;
using NoxAgent::SimulationRequest;

void Print(const Json& line) {
  std::cout << line.Dump() << '\n';
}

void Print(const std::vector<SimulationEvent>& events) {
  for (const SimulationEvent& event : events) {
    Print(ToJson(event));
  }
}

void Answer(const SimulationRequest& request) {
  switch (request.m_Command) {
    case SimulationRequest::Command::Simulate:
      return Print(NoxAgent::Simulate(request));
    case SimulationRequest::Command::Next: {
      const NoxAgent::NextRuns answer = NoxAgent::FindNextRuns(request);
      Print(answer.m_Runs);
      return Print({{"searchedUntil", answer.m_SearchedUntil}});
    }
    case SimulationRequest::Command::Explain:
      return Print(ToJson(NoxAgent::FindTaskFacts(request)));
  }
}

}  // namespace

int main() {
  try {
    BaseSDK::ASystemZone::Hold();
    BaseSDK::ALogConfig::SetDefaultLevel(BaseSDK::ALogger::Error);
    std::ios::sync_with_stdio(false);
    const std::string request(std::istreambuf_iterator<char>(std::cin), {});
    Answer(NoxAgent::SimulationRequestFrom(Json::Parse(request)));
    std::cout.flush();
    return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
