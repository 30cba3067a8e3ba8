#include "tests/agent/daemon/lives/LivesRun.h"
#include "tests/support/RandomRuns.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace NoxAgent {
namespace {

// Without the test's environment that CMakeLists.txt sets, they take longer.
TEST(LivesTest, KeepWhatTheyHaveTold) {
  TestSupport::PerformRandomRuns("NOX_LIVES", 400,
                                 [](std::uint64_t seed) { return LivesRun(seed).Perform(); });
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
