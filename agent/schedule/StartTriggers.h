#pragma once

#include "agent/schedule/StartRule.h"

#include <vector>

namespace NoxAgent {

/// The triggers of a task that is to run by the rules from `from` on, never before, and without a
/// run at once: each rule begins at its first start (BeginAtFirstStart), and what comes at another
/// time before that is a trigger that fires once. Where the repetitions of a
/// start on the day of `from` are under way by then, a trigger that fires once brings the rest of
/// them. A rule that has no start to come brings nothing.
std::vector<TriggerRule> StartTriggers(const std::vector<StartRule>& rules,
                                       const LocalCalendar& calendar, long from);

}  // namespace NoxAgent
