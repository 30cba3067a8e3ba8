#include "agent/client/TimeArgument.h"

#include "agent/client/ExitCode.h"
#include "agent/library/Pattern.h"
#include "agent/phrase/PhraseValues.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>

#include <optional>

namespace NoxAgent {

using BaseSDK::ADateTime;
using BaseSDK::AString;

namespace {

[[noreturn]] void Refuse(const std::string& option, const std::string& text,
                         const std::string& form) {
  throw CommandError(ExitCode::Usage,
                     option + " \"" + text + "\" cannot be read; write it like " + form);
}

}  // namespace

long ReadTime(const std::string& option, const std::string& text) {
  const bool lacksSeconds = !MatchPattern(".*[T ][0-9]{2}:[0-9]{2}", text).empty();
  const std::string whole = lacksSeconds ? text + ":00" : text;
  const long seconds = ADateTime(AString::FromUtf8(whole)).GetTime();
  if (seconds <= 0) {
    Refuse(option, text,
           "2030-12-31, \"2030-12-31 08:00\" or 2030-12-31T08:00:00, from 1970 to January 2038");
  }
  return seconds;
}

// A length of the language of schedules has no days: a day of the calendar need not have 24 hours.
long ReadDuration(const std::string& option, const std::string& text) {
  constexpr long DaySeconds = 86400;
  const auto days = MatchPattern("([0-9]{1,4})d(.*)", text);
  const std::string& rest = days.empty() ? text : days[2];
  const long daySeconds = days.empty() ? 0 : std::stol(days[1]) * DaySeconds;
  const std::optional<long> restSeconds = ReadLength(rest);
  const bool isGood = restSeconds || (rest.empty() && daySeconds > 0);
  if (!isGood) {
    Refuse(option, text, "90s, 10m, 2h, 3d or 1d12h");
  }
  return BaseSDK::Add32(daySeconds, restSeconds.value_or(0));
}

SimulationRequest::Span ReadSpan(const std::string& option, const std::string& text) {
  const std::size_t dots = text.find("..");
  if (dots == std::string::npos) {
    Refuse(option, text, "2030-12-31T08:00..2030-12-31T09:00");
  }
  const long first = ReadTime(option, text.substr(0, dots));
  const long last = ReadTime(option, text.substr(dots + 2));
  if (last <= first) {
    throw CommandError(ExitCode::Usage, option + " " + text + " ends before it begins");
  }
  return {first, last};
}

SimulationRequest::ClockStep ReadClockStep(const std::string& option, const std::string& text) {
  const auto parts = MatchPattern("(.*)=([+-][0-9]{1,9})", text);
  if (parts.empty()) {
    Refuse(option, text, "2030-12-31T08:00=+3600");
  }
  return {ReadTime(option, parts[1]), std::stol(parts[2])};
}

}  // namespace NoxAgent
