#pragma once

#include <cstdint>
#include <vector>

namespace NoxAgent {

/// Runs at equal distances within a day, in seconds: at m_Clock after midnight, then every
/// m_Interval until m_Duration after the first one, which is the last run. A single run has neither
/// interval nor duration.
struct DayRun {
  long m_Clock = 0;
  long m_Interval = 0;
  long m_Duration = 0;
};

/// Each of the minutes in each of the hours (masks as those of CronExpression), as few runs of
/// equal distance as are easily found. None of them goes past midnight, nor from one hour into the
/// next where `cuts` has the latter (FindHourCuts), and no minute is in two.
std::vector<DayRun> DivideDay(std::uint64_t minutes, long hours, long cuts);

}  // namespace NoxAgent
