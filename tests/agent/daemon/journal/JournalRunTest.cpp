#include "tests/agent/daemon/journal/JournalRun.h"

#include "tests/support/EnvironmentNumber.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace NoxAgent {
namespace {

using TestSupport::EnvironmentNumber;

// For long runs: NOX_JOURNAL_SEED is the first seed, NOX_JOURNAL_RUNS how many there are. Without
// the test's environment that CMakeLists.txt sets, they take three times as long.
TEST(JournalRunTest, KeepsItsPromisesWhateverHappens) {
  constexpr long Runs = 300;
  const long first = EnvironmentNumber("NOX_JOURNAL_SEED", 1);
  const long runs = EnvironmentNumber("NOX_JOURNAL_RUNS", Runs);
  for (long seed = first; seed < first + runs; ++seed) {
    const std::string problem = JournalRun(static_cast<std::uint64_t>(seed)).Perform();
    ASSERT_EQ("", problem) << "NOX_JOURNAL_SEED=" << seed << " NOX_JOURNAL_RUNS=1";
  }
}

}  // namespace
}  // namespace NoxAgent
