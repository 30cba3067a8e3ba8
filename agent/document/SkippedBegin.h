#pragma once

#include "agent/document/TriggerFields.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// A begin date whose time of day is left out by a change of the clocks (02:30 in the night to
/// summer time), and the local time that takes its place, both as "2027-03-14 02:30:00".
struct SkippedBegin {
  std::string m_Wanted;
  std::string m_Instead;
};

/// Nothing when the trigger has no begin date, or one that the clocks do show.
std::optional<SkippedBegin> FindSkippedBegin(const TriggerFields& trigger);

}  // namespace NoxAgent
