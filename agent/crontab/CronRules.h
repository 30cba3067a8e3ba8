#pragma once

#include "agent/crontab/CronExpression.h"
#include "agent/crontab/CronRefusal.h"
#include "agent/schedule/StartRule.h"

#include <cstddef>
#include <variant>
#include <vector>

namespace NoxAgent {

/// A task of more rules than this is refused: each is a trigger that the scheduler looks at.
constexpr std::size_t MostCronRules = 300;

/// The rules by which a task runs in the minutes of a crontab line; several may have the same
/// minute, in which the task then runs once. Or the reason why no rules say that.
///
/// `cuts` are the hours at which the clocks of the task's zone are set (FindHourCuts). What happens
/// on days on which they are is in docs/crontab.md.
std::variant<std::vector<StartRule>, CronRefusal> MakeCronRules(const CronExpression& expression,
                                                                long cuts);

}  // namespace NoxAgent
