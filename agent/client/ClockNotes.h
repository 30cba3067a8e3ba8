#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// What the changes of the clocks within two years do to a task of these triggers, a sentence each:
/// the first start that comes at another time of day because the clocks leave its own out, the
/// first repetition that ends at another time of day, and the first day with runs that the
/// scheduler passes over. Of the latter two it is the task as a whole that counts: one trigger may
/// have the runs that another one lacks, and all share their last run.
std::vector<std::string> ClockChangeNotes(const std::vector<TriggerRule>& triggers,
                                          const LocalCalendar& calendar, long now);

}  // namespace NoxAgent
