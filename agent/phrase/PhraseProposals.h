#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/phrase/TriggerRuns.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// Rules in words that may stand for the first of the triggers, and perhaps for others with it;
/// what says most comes first. `next` is the first trigger's next run.
std::vector<PhraseRule> ProposePhrases(const std::vector<TriggerRule>& triggers,
                                       const TriggerRun& next, const LocalCalendar& calendar);

}  // namespace NoxAgent
