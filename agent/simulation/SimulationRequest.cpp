#include "agent/simulation/SimulationRequest.h"

namespace NoxAgent {

using nlohmann::json;

NLOHMANN_JSON_SERIALIZE_ENUM(SimulationRequest::Command,
                             {{SimulationRequest::Command::Simulate, "simulate"},
                              {SimulationRequest::Command::Next, "next"},
                              {SimulationRequest::Command::Explain, "explain"}})

json ToJson(const SimulationRequest& request) {
  json documents = json::array();
  for (const auto& document : request.m_Documents)
    documents.push_back({{"id", document.m_Id}, {"xml", document.m_Xml}});
  json steps = json::array();
  for (const auto& step : request.m_ClockSteps)
    steps.push_back(json::array({step.m_At, step.m_Seconds}));
  json answer = {{"command", request.m_Command}, {"documents", documents},
                 {"from", request.m_From},       {"to", request.m_To},
                 {"count", request.m_Count},     {"gateClosed", request.m_GateClosed},
                 {"clockSteps", steps},          {"failAt", request.m_FailAt}};
  if (request.m_RunSeconds) answer["runSeconds"] = *request.m_RunSeconds;
  return answer;
}

SimulationRequest SimulationRequestFrom(const json& request) {
  SimulationRequest answer;
  request.at("command").get_to(answer.m_Command);
  for (const json& document : request.at("documents"))
    answer.m_Documents.push_back({document.at("id"), document.at("xml")});
  request.at("from").get_to(answer.m_From);
  answer.m_To = request.value("to", answer.m_To);
  answer.m_Count = request.value("count", answer.m_Count);
  answer.m_GateClosed = request.value("gateClosed", answer.m_GateClosed);
  for (const json& step : request.value("clockSteps", json::array()))
    answer.m_ClockSteps.push_back({step.at(0), step.at(1)});
  answer.m_FailAt = request.value("failAt", answer.m_FailAt);
  if (request.contains("runSeconds")) answer.m_RunSeconds = request["runSeconds"].get<long>();
  return answer;
}

}  // namespace NoxAgent
