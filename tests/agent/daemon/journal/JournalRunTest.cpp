#include "tests/agent/daemon/journal/JournalRun.h"

#include "tests/support/RandomRuns.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace NoxAgent {
namespace {

// Without the test's environment that CMakeLists.txt sets, they take three times as long.
TEST(JournalRunTest, KeepsItsPromisesWhateverHappens) {
  TestSupport::PerformRandomRuns("NOX_JOURNAL", 300,
                                 [](std::uint64_t seed) { return JournalRun(seed).Perform(); });
}

}  // namespace
}  // namespace NoxAgent
