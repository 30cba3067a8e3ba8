#pragma once

#include "agent/crontab/CronExpression.h"
#include "agent/schedule/LocalCalendar.h"

#include <optional>
#include <vector>

namespace NoxAgent {

/// The moments at which a crontab line runs by its own words: all minutes whose local wall clock it
/// names, one after the other. A time that the clocks leave out is none of them, one that they show
/// twice is there twice.
///
///     CronMinutes minutes(expression, calendar, from, until);
///     while (const auto moment = minutes.Next()) { ... }
///
/// Days that do not match cost nothing but a look at their date. Moments are seconds since the
/// epoch.
class CronMinutes {
 public:
  /// The moments from `from` to `until`, both included, as far as the calendar reaches. The
  /// calendar must outlive the object.
  CronMinutes(const CronExpression& expression, const LocalCalendar& calendar, long from,
              long until);

  /// Nothing when there are no more.
  std::optional<long> Next();

 private:
  /// A stretch of time without a change of the clocks.
  void BeginStretch(long from);
  bool IsDayMatching() const;

  const CronExpression m_Expression;
  const LocalCalendar& m_Calendar;
  const long m_Until;
  std::vector<long> m_Clocks;  ///< the times of day, in seconds since midnight
  long m_StretchBegin = 0;
  long m_StretchEnd = 0;  ///< the first moment behind it
  long m_Offset = 0;
  long m_Day = 0;
  std::size_t m_NextClock = 0;
};

}  // namespace NoxAgent
