#include "agent/simulation/TaskFacts.h"

namespace NoxAgent {

namespace {

Json ToJson(const std::optional<long>& moment) {
  return moment ? Json(*moment) : Json();
}

std::optional<long> MomentFrom(const Json& json) {
  return json.IsNull() ? std::nullopt : std::optional<long>(json.Long());
}

}  // namespace

Json ToJson(const TaskFacts& facts) {
  Json triggers = Json::List{};
  for (const TaskFacts::Trigger& trigger : facts.m_Triggers) {
    triggers.Append({{"due", trigger.m_Due}, {"next", trigger.m_Next}});
  }
  return {{"at", facts.m_At},
          {"enabled", facts.m_Enabled},
          {"lastRun", facts.m_LastRun},
          {"triggers", triggers},
          {"run", facts.m_Run ? ToJson(*facts.m_Run) : Json()},
          {"deleted", facts.m_Deleted},
          {"noHandler", facts.m_NoHandler},
          {"goneSince", ToJson(facts.m_GoneSince)},
          {"dueByReading", ToJson(facts.m_DueByReading)}};
}

TaskFacts TaskFactsFrom(const Json& line) {
  TaskFacts facts;
  facts.m_At = line.At("at").Long();
  facts.m_Enabled = line.At("enabled").Bool();
  facts.m_LastRun = line.At("lastRun").Long();
  for (const Json& trigger : line.At("triggers").Items()) {
    facts.m_Triggers.push_back({trigger.At("due").Bool(), trigger.At("next").Long()});
  }
  if (!line.At("run").IsNull()) {
    facts.m_Run = SimulationEventFrom(line.At("run"));
  }
  facts.m_Deleted = line.At("deleted").Bool();
  facts.m_NoHandler = line.At("noHandler").Bool();
  facts.m_GoneSince = MomentFrom(line.At("goneSince"));
  facts.m_DueByReading = MomentFrom(line.At("dueByReading"));
  return facts;
}

}  // namespace NoxAgent
