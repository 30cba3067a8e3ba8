#include "tests/agent/daemon/journal/JournalRun.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace NoxAgent {
namespace {

// For long runs: NOX_JOURNAL_SEED is the first seed, NOX_JOURNAL_RUNS how many there are. Without
// the test's environment that CMakeLists.txt sets, they take three times as long.
unsigned long NumberFrom(const char* variable, unsigned long otherwise) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::strtoul(text, nullptr, 10) : otherwise;
}

TEST(JournalRunTest, KeepsItsPromisesWhateverHappens) {
  constexpr unsigned long Runs = 300;
  const unsigned long first = NumberFrom("NOX_JOURNAL_SEED", 1);
  const unsigned long runs = NumberFrom("NOX_JOURNAL_RUNS", Runs);
  for (unsigned long seed = first; seed < first + runs; ++seed) {
    const std::string problem = JournalRun(seed).Perform();
    ASSERT_EQ("", problem) << "NOX_JOURNAL_SEED=" << seed << " NOX_JOURNAL_RUNS=1";
  }
}

}  // namespace
}  // namespace NoxAgent
