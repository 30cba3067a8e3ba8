// Runs the benchmarks, each a few times, and ends with the table of figures. Arguments are those of
// the benchmark library, such as --benchmark_filter=NextRun.
#include "bench/FigureTable.h"

#include <array>
#include <vector>

int main(int count, char** arguments) {
  // On a machine with other work the best of several short repetitions is nearer to the truth than
  // the mean of a long one. They come first, so that the command line can have it otherwise.
  std::array<char, 32> repetitions{"--benchmark_repetitions=3"};
  std::array<char, 32> shortest{"--benchmark_min_time=0.1"};
  std::vector<char*> all{arguments[0], repetitions.data(), shortest.data()};
  all.insert(all.end(), arguments + 1, arguments + count);
  int number = static_cast<int>(all.size());
  all.push_back(nullptr);
  benchmark::Initialize(&number, all.data());
  if (benchmark::ReportUnrecognizedArguments(number, all.data())) {
    return 2;
  }
  Workbench::FigureTable table;
  return benchmark::RunSpecifiedBenchmarks(&table) == 0 ? 1 : 0;
}
