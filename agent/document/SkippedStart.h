#pragma once

#include "agent/document/TriggerFields.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// Finds the starts that a change of the clocks leaves out: 02:30 in the night to summer time.
///
/// A local time that does not exist and the one that takes its place, "2027-03-14 02:30:00" both.
struct SkippedStart {
  std::string m_Wanted;
  std::string m_Instead;
};

/// The begin date itself, when what it says is a time that its day does not have.
std::optional<SkippedStart> FindSkippedBegin(const TriggerFields& trigger);

/// The first day within two years from `now` (or from the begin date, when that is later) on which
/// the trigger's masks let it fire and which does not have its time of day. Rhythms of several days
/// or weeks are not counted out, so the trigger may turn out not to fire on just that day.
std::optional<SkippedStart> FindSkippedStart(const TriggerFields& trigger, long now);

}  // namespace NoxAgent
