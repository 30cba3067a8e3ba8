#pragma once

#include "agent/crontab/CrontabEntry.h"

#include <optional>
#include <string_view>
#include <variant>

namespace NoxAgent {

/// Reads NAME=value: blanks may stand around both; both may have quotes around them, '...' or
/// "...", which keep blanks. Nothing in the value is expanded. Nothing when the line is none.
std::optional<std::variant<CrontabSetting, CronRefusal>> ReadAssignment(std::string_view line);

}  // namespace NoxAgent
