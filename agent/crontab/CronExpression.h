#pragma once

#include "agent/crontab/CronRefusal.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

namespace NoxAgent {

/// When a crontab line runs: the minutes of wall-clock time that its five fields name.
/// docs/crontab.md tells what may stand in them.
///
/// A copy is as good as the original, and any thread may ask.
class CronExpression {
 public:
  /// Reads "MINUTE HOUR DAY MONTH WEEKDAY" or one of the words @yearly, @annually, @monthly,
  /// @weekly, @daily, @midnight and @hourly; nothing else may stand in `text`. The refusal names
  /// field, word and column; `column` is that of the text's first byte in its line.
  static std::variant<CronExpression, CronRefusal> Parse(std::string_view text,
                                                         std::size_t column = 1);

  /// Whether it runs in that minute. `day` and `month` count from 1, `weekday` from 0, Sunday.
  bool Matches(int minute, int hour, int day, int month, int weekday) const;
  /// Whether it runs on that day at all.
  bool MatchesDay(int day, int month, int weekday) const;

  // The fields as masks; the last three as those of TriggerRule.

  std::uint64_t Minutes() const { return m_Minutes; }   ///< bit 0 is the full hour
  long Hours() const { return m_Hours; }                ///< bit 0 is the hour after midnight
  long DaysOfMonth() const { return m_DaysOfMonth; }    ///< bit 0 is the 1st
  long MonthsOfYear() const { return m_MonthsOfYear; }  ///< bit 0 is January
  long DaysOfWeek() const { return m_DaysOfWeek; }      ///< bit 0 is Sunday

  /// Of a day, whether its date or its weekday suffices. So it is when neither field begins with
  /// "*"; else both must match.
  bool EitherDaySuffices() const { return m_EitherDaySuffices; }

 private:
  std::uint64_t m_Minutes = 0;
  long m_Hours = 0;
  long m_DaysOfMonth = 0;
  long m_MonthsOfYear = 0;
  long m_DaysOfWeek = 0;
  bool m_EitherDaySuffices = false;
};

}  // namespace NoxAgent
