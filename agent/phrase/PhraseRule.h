#pragma once

#include "agent/schedule/TriggerRule.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace NoxAgent {

/// One rule of a schedule in words: "monthly on 1,15 at 06:00". docs/schedules.md explains the
/// language. Masks are as in TriggerRule, times of day in seconds since midnight, lengths in
/// seconds, moments in seconds since the epoch.
struct PhraseRule {
  enum class Days {
    Now,         ///< as soon as possible, once
    Once,        ///< at m_From; there is no other time
    EveryDays,   ///< every m_Count-th day
    EveryWeeks,  ///< on m_Weekdays of every m_Count-th week, Sunday to Saturday
    MonthDays,   ///< on m_MonthDays of m_Months
    LastDay,     ///< on the last day of m_Months
    MonthWeek,   ///< on m_Weekdays of m_Week as the scheduler counts weeks, days 1 to 6 and so on
    Ordinal,     ///< on the m_Week-th of each of m_Weekdays in a month; LastWeek is the last
    Cron,        ///< what m_Cron says
  };
  static constexpr long AllWeekdays = 0x7F;
  static constexpr long AllMonthDays = 0x7FFFFFFF;
  static constexpr long AllMonths = 0xFFF;

  Days m_Days = Days::EveryDays;
  long m_Count = 1;
  long m_Weekdays = AllWeekdays;
  long m_MonthDays = 0;
  long m_Months = AllMonths;  ///< of a count none are left out
  long m_Week = 1;
  std::string m_Cron;  ///< five fields of a crontab

  /// From the first minute of the day to the last, every m_Interval; m_Clocks is empty then.
  bool m_IsAllDay = false;
  std::vector<long> m_Clocks;  ///< in order, each once
  long m_Interval = 0;         ///< 0: no repetition
  long m_Duration = 0;         ///< from each start, for repetitions and for m_Stops
  bool m_Stops = false;        ///< a run is ended when the duration is over

  long m_From = NoTime;   ///< no start before it; of a count, the first day (week)
  long m_Until = NoTime;  ///< no run after it

  bool operator==(const PhraseRule&) const = default;
};

using Phrase = std::vector<PhraseRule>;

/// Words that are no schedule, or one that a task document cannot have. The message tells where,
/// and what can be written instead.
class PhraseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace NoxAgent
