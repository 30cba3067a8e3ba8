#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"
#include "tests/simulation/Random.h"

#include <vector>

namespace NoxAgentTest {

/// One rule in words that a document can have, of any kind but Cron. Its spans, if it has any,
/// begin and end within a year of `now`.
NoxAgent::PhraseRule RandomPhraseRule(Simulation::Random& random,
                                      const NoxAgent::LocalCalendar& calendar, long now);

/// Every run up to `until` of a task with these triggers that is added at `from`; the model of the
/// scheduler tells.
std::vector<long> RunsOf(const std::vector<NoxAgent::TriggerRule>& triggers,
                         const NoxAgent::LocalCalendar& calendar, long from, long until);

}  // namespace NoxAgentTest
