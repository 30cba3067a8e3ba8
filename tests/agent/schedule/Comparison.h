#pragma once

#include <cstdint>
#include <string>

namespace NoxAgentTest {

/// Runs random tasks of this seed, one around each change of the clocks, by the real scheduler
/// under virtual time and by the model of it that `check` asks. Empty when they agree on every run;
/// otherwise the first task on which they do not, with both lists.
std::string CompareWithScheduler(std::uint64_t seed);

}  // namespace NoxAgentTest
