#include "tests/agent/daemon/lives/LivesRun.h"
#include "tests/support/EnvironmentNumber.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace NoxAgent {
namespace {

using TestSupport::EnvironmentNumber;

// For long runs: NOX_LIVES_SEED is the first seed, NOX_LIVES_RUNS how many there are. Without the
// test's environment that CMakeLists.txt sets, they take longer.
TEST(LivesTest, KeepWhatTheyHaveTold) {
  constexpr long Runs = 400;
  const long first = EnvironmentNumber("NOX_LIVES_SEED", 1);
  const long runs = EnvironmentNumber("NOX_LIVES_RUNS", Runs);
  for (long seed = first; seed < first + runs; ++seed) {
    const std::string problem = LivesRun(static_cast<std::uint64_t>(seed)).Perform();
    ASSERT_EQ("", problem) << "NOX_LIVES_SEED=" << seed << " NOX_LIVES_RUNS=1";
  }
}

TEST(LivesTest, AreTheSameForTheSameSeed) {
  const auto tell = [](unsigned long seed) {
    LivesRun run(seed);
    (void)run.Perform();
    return run.Story();
  };
  for (unsigned long seed = 1; seed <= 10; ++seed) {
    EXPECT_EQ(tell(seed), tell(seed));
  }
}

}  // namespace
}  // namespace NoxAgent
