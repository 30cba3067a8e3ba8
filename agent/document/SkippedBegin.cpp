#include "agent/document/SkippedBegin.h"

#include <cstdio>
#include <ctime>
#include <tuple>

namespace NoxAgent {

namespace {

auto TimeOfDay(const std::tm& fields) {
  return std::make_tuple(fields.tm_hour, fields.tm_min, fields.tm_sec);
}

std::string Written(const std::tm& fields) {
  char text[64];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
  return std::string(text, length);
}

}  // namespace

std::optional<SkippedBegin> FindSkippedBegin(const TriggerFields& trigger) {
  if (trigger.m_Begin == -1 || !trigger.m_BeginText) {
    return std::nullopt;
  }
  std::tm wanted{};
  const int read =
      std::sscanf(trigger.m_BeginText->m_Text.c_str(), "%d%*c%d%*c%d%*c%d:%d:%d", &wanted.tm_year,
                  &wanted.tm_mon, &wanted.tm_mday, &wanted.tm_hour, &wanted.tm_min, &wanted.tm_sec);
  if (read < 3) {
    return std::nullopt;
  }
  wanted.tm_year -= 1900;
  wanted.tm_mon -= 1;
  const std::time_t begin = trigger.m_Begin;
  std::tm found{};
  (void)::localtime_r(&begin, &found);
  if (TimeOfDay(found) == TimeOfDay(wanted)) {
    return std::nullopt;
  }
  return SkippedBegin{Written(wanted), Written(found)};
}

}  // namespace NoxAgent
