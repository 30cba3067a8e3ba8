#pragma once

#include "agent/schedule/TriggerRule.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// What a new task document says.
struct NewTaskDocument {
  std::vector<TriggerRule> m_Triggers;
  std::string m_HandlerClassId;
  std::string m_Description;  ///< in UTF-8; that of each trigger, left out when empty
  bool m_Enabled = true;
};

/// The document, laid out for people and in ASCII: what lies beyond becomes character references.
/// Intervals are in whole seconds, durations in whole minutes; begins and ends are local times
/// (TZ).
std::string WriteTaskDocument(const NewTaskDocument& task);

}  // namespace NoxAgent
