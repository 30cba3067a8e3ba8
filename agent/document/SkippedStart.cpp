#include "agent/document/SkippedStart.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <tuple>

namespace NoxAgent {

namespace {

constexpr int DaysSearched = 2 * 366;

std::tm LocalFields(long seconds) {
  const std::time_t moment = seconds;
  std::tm fields{};
  (void)localtime_r(&moment, &fields);
  return fields;
}

auto TimeOfDay(const std::tm& fields) {
  return std::make_tuple(fields.tm_hour, fields.tm_min, fields.tm_sec);
}

std::string Written(const std::tm& fields) {
  char text[64];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
  return std::string(text, length);
}

// Nothing when the local time that `wanted` names exists.
std::optional<SkippedStart> Skipped(const std::tm& wanted) {
  std::tm found = wanted;
  found.tm_isdst = -1;
  if (std::mktime(&found) == -1) {
    return std::nullopt;
  }
  if (TimeOfDay(found) == TimeOfDay(wanted)) {
    return std::nullopt;
  }
  return SkippedStart{Written(wanted), Written(found)};
}

bool MasksAllow(const TriggerFields& trigger, const std::tm& day) {
  const auto has = [](long mask, int bit) { return ((mask >> bit) & 1) != 0; };
  const bool month = has(trigger.m_MonthsOfYear, day.tm_mon);
  const bool weekday = has(trigger.m_DaysOfWeek, day.tm_wday);
  switch (trigger.m_Type) {
    case TriggerFields::Weekly:
      return weekday;
    case TriggerFields::MonthlyByDate:
      return month && has(trigger.m_DaysOfMonth, day.tm_mday - 1);
    case TriggerFields::MonthlyByWeekday:
      return month && weekday;
    default:
      return true;
  }
}

// The day `offset` days after that of `first`, at noon, which every day has.
std::tm DayAfter(const std::tm& first, int offset) {
  std::tm day = first;
  day.tm_mday += offset;
  day.tm_hour = 12;
  day.tm_min = day.tm_sec = 0;
  day.tm_isdst = -1;
  return std::mktime(&day) == -1 ? first : day;
}

}  // namespace

std::optional<SkippedStart> FindSkippedBegin(const TriggerFields& trigger) {
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
  return Skipped(wanted);
}

std::optional<SkippedStart> FindSkippedStart(const TriggerFields& trigger, long now) {
  if (trigger.m_Type == TriggerFields::Once || trigger.m_Begin == -1) {
    return std::nullopt;
  }
  const std::tm begin = LocalFields(trigger.m_Begin);
  const std::tm first = LocalFields(std::max(now, trigger.m_Begin));
  for (int offset = 0; offset < DaysSearched; ++offset) {
    std::tm day = DayAfter(first, offset);
    if (trigger.m_End != -1 && std::mktime(&day) > trigger.m_End) {
      return std::nullopt;
    }
    if (!MasksAllow(trigger, day)) {
      continue;
    }
    std::tie(day.tm_hour, day.tm_min, day.tm_sec) = TimeOfDay(begin);
    if (const auto skipped = Skipped(day)) {
      return skipped;
    }
  }
  return std::nullopt;
}

}  // namespace NoxAgent
