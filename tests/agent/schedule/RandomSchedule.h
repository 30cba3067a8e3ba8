#pragma once

#include "agent/schedule/SchedulerRuns.h"
#include "agent/schedule/TriggerRule.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NoxAgentTest {

/// A zone, and a stretch of it in which the clocks change.
struct ClockChangeCase {
  const char* m_Zone;
  const char* m_Change;  ///< local time, about when
};

const std::vector<ClockChangeCase>& ClockChangeCases();

/// A task of one to three triggers around a change of the clocks, from a seed.
struct RandomSchedule {
  /// The case's zone must be in force.
  RandomSchedule(std::uint64_t seed, const ClockChangeCase& change);

  std::vector<NoxAgent::TriggerRule> m_Triggers;
  NoxAgent::SchedulerRuns::Setting m_Setting;
  std::string m_Document;
};

}  // namespace NoxAgentTest
