#pragma once

#include "agent/crontab/CronRules.h"
#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// A schedule in words takes no more triggers than this: each costs the scheduler time.
constexpr std::size_t MaxPhraseTriggers = MostCronRules;

/// The triggers by which the scheduler does what the words say, from `now` on. Each begins at a
/// start that lies ahead, so that nothing runs by surprise; where a repetition is under way, its
/// rest is a trigger of its own. A rule may take several: one for each time of day; one for each
/// year where a document has no word for its days ("the first Monday"); one from each change of the
/// clocks on where the scheduler would count days otherwise.
///
/// Throws PhraseError for what the scheduler would not do as the words say, with the nearest that
/// it would.
std::vector<TriggerRule> MakeTriggers(const Phrase& phrase, const LocalCalendar& calendar,
                                      long now);

}  // namespace NoxAgent
