// nox_schedule_comparison: random tasks by the real scheduler and by the model that `check` asks.
//
//   nox_schedule_comparison FIRST_SEED LAST_SEED
//
// Exit status 0 when they agree on every run, 1 otherwise; a seed that is printed tells the same
// every time.
#include "tests/agent/schedule/Comparison.h"

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: " << argv[0] << " FIRST_SEED LAST_SEED\n";
    return 2;
  }
  const std::uint64_t last = std::strtoull(argv[2], nullptr, 10);
  bool agrees = true;
  for (std::uint64_t seed = std::strtoull(argv[1], nullptr, 10); seed <= last; ++seed) {
    const std::string difference = NoxAgentTest::CompareWithScheduler(seed);
    std::cout << difference << std::flush;
    agrees = agrees && difference.empty();
  }
  return agrees ? EXIT_SUCCESS : EXIT_FAILURE;
}
