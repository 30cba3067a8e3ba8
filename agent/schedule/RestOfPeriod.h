#pragma once

#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// The triggers that bring what is left from `from` on of the repetitions of a start before it,
/// each of them once: usually one that repeats. A document says a period in whole minutes, so
/// repetitions may have to stand by themselves before the rest is that. Of the rule its repetition,
/// end and whether it kills count.
std::vector<TriggerRule> RestOfPeriod(const TriggerRule& rule, long start, long from);

}  // namespace NoxAgent
