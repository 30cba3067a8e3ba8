#pragma once

#include "tests/support/EnvironmentNumber.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace TestSupport {

/// Performs runs of seeds from 1 on until one tells of a problem. For long runs the environment
/// says otherwise: NAME_SEED is the first seed, NAME_RUNS how many there are. `perform` takes a
/// seed and returns the problem, which is empty when there is none.
template <class Perform>
void PerformRandomRuns(const std::string& name, long runs, const Perform& perform) {
  const long first = EnvironmentNumber((name + "_SEED").c_str(), 1);
  const long end = first + EnvironmentNumber((name + "_RUNS").c_str(), runs);
  for (long seed = first; seed < end; ++seed) {
    const std::string problem = perform(static_cast<std::uint64_t>(seed));
    ASSERT_EQ("", problem) << name << "_SEED=" << seed << ' ' << name << "_RUNS=1";
  }
}

}  // namespace TestSupport
