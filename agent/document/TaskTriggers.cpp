#include "agent/document/TaskTriggers.h"

#include "agent/document/DocumentSource.h"
#include "agent/document/ProblemList.h"
#include "agent/document/TriggerFields.h"

namespace NoxAgent {

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
