// The expression behind "cron" in a schedule in words.
#pragma once

#include "agent/crontab/CronExpression.h"
#include "agent/crontab/CronRefusal.h"

#include <string>

namespace NoxAgent {

/// Throws PhraseError when the text is no expression.
CronExpression ReadCron(const std::string& text);

/// "cron '0 0 30 2 *': why it is refused; what to do instead"
std::string CronRefusalText(const std::string& text, const CronRefusal& refusal);

}  // namespace NoxAgent
