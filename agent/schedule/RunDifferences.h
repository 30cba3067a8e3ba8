#pragma once

#include "agent/schedule/SchedulerRuns.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace NoxAgent {

/// Runs of one local day that were expected and do not come, or that come and were not expected.
struct RunDifference {
  enum class Kind { Missing, Extra };
  Kind m_Kind = Kind::Missing;
  long m_First = 0;  ///< the first and the last of them, in seconds since the epoch
  long m_Last = 0;
  std::size_t m_Count = 0;
};

/// Where the runs of a task differ from what is expected of it.
struct RunDifferences {
  std::vector<RunDifference>
      m_Days;                  ///< in the order of m_First; the first ones when there are more
  std::size_t m_Missing = 0;   ///< all runs that are missing, also those of later days
  std::size_t m_Extra = 0;     ///< all runs that nobody expects
  std::size_t m_Expected = 0;  ///< all that are expected

  bool IsNone() const { return m_Missing == 0 && m_Extra == 0; }
};

/// The moments that are expected, in the order of time, one at each call; nothing when there are no
/// more. None may be outside of the span of the runs that they are compared with.
using ExpectedMoments = std::function<std::optional<long>()>;

/// Compares what is expected with what the scheduler does. A start that comes later than expected
/// is one run missing and one extra. At most `mostDays` differences are listed one by one; the sums
/// hold for all.
///
/// `runs` is asked to its end. Its setting says whether the task has run before: with a last run
/// just before the span, rules are held against rules alone. With none, a trigger whose begin has
/// passed gives one run more at once; BeginAtFirstStart makes triggers that do not.
RunDifferences FindRunDifferences(const ExpectedMoments& expected, SchedulerRuns& runs,
                                  const LocalCalendar& calendar, std::size_t mostDays);

}  // namespace NoxAgent
