#include "agent/document/TaskTriggers.h"

#include "agent/document/DocumentSource.h"
#include "agent/document/ProblemList.h"
#include "agent/document/TriggerFields.h"

namespace NoxAgent {

namespace {

bool CanFire(const TriggerFields& trigger) {
  return !trigger.m_Disabled && trigger.m_Type <= TriggerFields::MonthlyByWeekday &&
         (trigger.m_Type == TriggerFields::AsSoonAsPossible || trigger.m_Begin != NoTime);
}

}  // namespace

std::vector<std::optional<TriggerRule>> ReadTriggerRules(const std::string& taskXml) {
  const DocumentSource source(taskXml);
  ProblemList ignored;  // `check` tells them
  std::vector<std::optional<TriggerRule>> rules;
  for (const auto& found : source.Document().select_nodes("//Trigger")) {
    const TriggerFields fields = ReadTriggerFields(source, found.node(), ignored);
    rules.push_back(CanFire(fields) ? std::optional(RuleOf(fields)) : std::nullopt);
  }
  return rules;
}

}  // namespace NoxAgent
