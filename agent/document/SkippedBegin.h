#pragma once

#include "agent/document/TriggerFields.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// A begin date that a change of the clocks leaves out (02:30 in the night to summer time), and the
/// local time that takes its place: "2027-03-14 02:30:00" both.
struct SkippedBegin {
  std::string m_Wanted;
  std::string m_Instead;
};

/// Nothing when the day of the begin date has what it says, and when there is no begin date.
std::optional<SkippedBegin> FindSkippedBegin(const TriggerFields& trigger);

}  // namespace NoxAgent
