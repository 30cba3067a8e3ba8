#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

namespace NoxAgent {

/// Throws PhraseError when the scheduler loses repetitions of the trigger, or starts it late, year
/// in, year out: its period reaches too near to the next start, or into a day without one. The
/// message names the longest period that it keeps.
void RefuseLostRuns(const TriggerRule& trigger, const LocalCalendar& calendar, long now);

}  // namespace NoxAgent
