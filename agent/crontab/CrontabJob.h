#pragma once

#include "agent/crontab/CronRefusal.h"
#include "agent/crontab/CrontabEntry.h"

#include <string>
#include <variant>

namespace NoxAgent {

/// The text of the job file for a crontab's task (docs/command-handler.md), or why there is none.
///
/// Words without anything for a shell are a command by themselves; all else is run by the shell
/// that SHELL names, as cron does it. The settings in force are the job's environment, HOME also
/// its directory.
std::variant<std::string, CronRefusal> MakeCrontabJob(const CrontabTask& task);

}  // namespace NoxAgent
