#include "agent/simulation/SimulationRequest.h"

#include <algorithm>
#include <iterator>

namespace NoxAgent {

namespace {

using Command = SimulationRequest::Command;

/// In the order of the commands.
constexpr const char* CommandNames[] = {"simulate", "next", "explain"};

const char* NameOf(Command command) {
  return CommandNames[static_cast<std::size_t>(command)];
}

Command CommandOf(const std::string& name) {
  const auto found = std::find(std::begin(CommandNames), std::end(CommandNames), name);
  if (found == std::end(CommandNames)) {
    throw JsonError("there is no command \"" + name + '"');
  }
  return static_cast<Command>(found - std::begin(CommandNames));
}

Json ToJson(const SimulationRequest::Document& document) {
  Json answer = {{"id", document.m_Id}, {"xml", document.m_Xml}};
  if (const auto& memory = document.m_Memory) {
    answer["memory"] = {{"lastRun", memory->m_LastRun},
                        {"enabled", memory->m_Enabled},
                        {"runEndsOk", memory->m_RunEndsOk}};
  }
  return answer;
}

SimulationRequest::Document DocumentFrom(const Json& json) {
  SimulationRequest::Document document{json.At("id").Text(), json.At("xml").Text()};
  if (const Json* const memory = json.Find("memory")) {
    document.m_Memory = {memory->At("lastRun").Long(), memory->At("enabled").Bool(),
                         memory->At("runEndsOk").Bool()};
  }
  return document;
}

void Put(Json& json, const char* name, const std::optional<long>& value) {
  if (value) {
    json[name] = *value;
  }
}

std::optional<long> OptionalLong(const Json& json, const char* name) {
  const Json* const value = json.Find(name);
  return value == nullptr ? std::nullopt : std::optional<long>(value->Long());
}

}  // namespace

Json ToJson(const SimulationRequest& request) {
  Json documents = Json::List{};
  for (const auto& document : request.m_Documents) {
    documents.Append(ToJson(document));
  }
  Json gateClosed = Json::List{};
  for (const auto& [from, until] : request.m_GateClosed) {
    gateClosed.Append(Json::List{from, until});
  }
  Json steps = Json::List{};
  for (const auto& step : request.m_ClockSteps) {
    steps.Append(Json::List{step.m_At, step.m_Seconds});
  }
  Json answer = {{"command", NameOf(request.m_Command)},
                 {"documents", documents},
                 {"from", request.m_From},
                 {"to", request.m_To},
                 {"count", request.m_Count},
                 {"gateClosed", gateClosed},
                 {"clockSteps", steps},
                 {"failAt", Json::List(request.m_FailAt.begin(), request.m_FailAt.end())}};
  Put(answer, "reading", request.m_Reading);
  Put(answer, "moment", request.m_Moment);
  Put(answer, "runSeconds", request.m_RunSeconds);
  return answer;
}

SimulationRequest SimulationRequestFrom(const Json& request) {
  SimulationRequest answer;
  answer.m_Command = CommandOf(request.At("command").Text());
  for (const Json& document : request.At("documents").Items()) {
    answer.m_Documents.push_back(DocumentFrom(document));
  }
  answer.m_From = request.At("from").Long();
  answer.m_To = request.Long("to", answer.m_To);
  answer.m_Count = static_cast<unsigned>(request.Long("count", 0));
  for (const Json& span : request.Items("gateClosed")) {
    answer.m_GateClosed.emplace_back(span.At(0).Long(), span.At(1).Long());
  }
  for (const Json& step : request.Items("clockSteps")) {
    answer.m_ClockSteps.push_back({step.At(0).Long(), step.At(1).Long()});
  }
  for (const Json& moment : request.Items("failAt")) {
    answer.m_FailAt.push_back(moment.Long());
  }
  answer.m_Reading = OptionalLong(request, "reading");
  answer.m_Moment = OptionalLong(request, "moment");
  answer.m_RunSeconds = OptionalLong(request, "runSeconds");
  return answer;
}

}  // namespace NoxAgent
