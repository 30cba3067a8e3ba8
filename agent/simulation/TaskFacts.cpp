#include "agent/simulation/TaskFacts.h"

namespace NoxAgent {

using nlohmann::json;

json ToJson(const TaskFacts& facts) {
  json triggers = json::array();
  for (const TaskFacts::Trigger& trigger : facts.m_Triggers)
    triggers.push_back({{"due", trigger.m_Due}, {"next", trigger.m_Next}});
  return {{"at", facts.m_At},
          {"enabled", facts.m_Enabled},
          {"lastRun", facts.m_LastRun},
          {"triggers", triggers},
          {"run", facts.m_Run ? ToJson(*facts.m_Run) : json()},
          {"deleted", facts.m_Deleted},
          {"noHandler", facts.m_NoHandler}};
}

TaskFacts TaskFactsFrom(const json& line) {
  TaskFacts facts;
  line.at("at").get_to(facts.m_At);
  line.at("enabled").get_to(facts.m_Enabled);
  line.at("lastRun").get_to(facts.m_LastRun);
  for (const json& trigger : line.at("triggers"))
    facts.m_Triggers.push_back({trigger.at("due"), trigger.at("next")});
  if (!line.at("run").is_null()) facts.m_Run = SimulationEventFrom(line["run"]);
  line.at("deleted").get_to(facts.m_Deleted);
  line.at("noHandler").get_to(facts.m_NoHandler);
  return facts;
}

}  // namespace NoxAgent
