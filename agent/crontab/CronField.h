#pragma once

#include "agent/crontab/CronRefusal.h"
#include "agent/crontab/CrontabWords.h"

#include <cstdint>
#include <variant>

namespace NoxAgent {

/// One of the five fields of a crontab line: which numbers it names.
///
///     FIELD = PART[,PART...]    PART = *[/STEP] | NUMBER | NUMBER-NUMBER[/STEP]
///
/// Months and weekdays have names too, of three letters in any case; the weekday 7 is 0, Sunday.
struct CronField {
  enum class Kind { Minute, Hour, DayOfMonth, Month, Weekday };

  std::uint64_t m_Numbers = 0;  ///< bit n is the number n
  bool m_IsStarred = false;     ///< begins with "*"

  /// Reads a field, or tells the word that it fails at, with its column.
  static std::variant<CronField, CronRefusal> Parse(Kind kind, const CrontabWord& field);
};

}  // namespace NoxAgent
