// The whole plug-in over many task files.
#include "bench/Workbench.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <optional>

namespace {

using Workbench::FineNow;

long CountOf(const benchmark::State& state) {
  return static_cast<long>(state.range(0));
}

void LoadTaskFiles(benchmark::State& state) {
  const Workbench::TaskDirectory directory;
  directory.Fill(CountOf(state), Workbench::DailyTask());
  for (auto _ : state) {
    std::optional<Workbench::Plugin> plugin(std::in_place, directory);
    const double start = FineNow();
    plugin->Start();
    state.SetIterationTime(FineNow() - start);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(LoadTaskFiles)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

void PassOverDailyTasks(benchmark::State& state) {
  const Workbench::TaskDirectory directory;
  directory.Fill(CountOf(state), Workbench::DailyTask());
  Workbench::Plugin plugin(directory);
  plugin.Start();
  for (auto _ : state) {
    const double start = FineNow();
    plugin.Pass();
    state.SetIterationTime(FineNow() - start);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(PassOverDailyTasks)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// From the second at which all tasks are due to the handler's first call.
void DueSecondToHandler(benchmark::State& state) {
  for (auto _ : state) {
    const Workbench::TaskDirectory directory;
    // Far enough ahead for the files to be written and loaded before it.
    const long due = time(nullptr) + 2 + CountOf(state) / 500;
    directory.Fill(CountOf(state), Workbench::TaskDueAt(due));
    Workbench::Plugin plugin(directory);
    plugin.Start();
    plugin.Pass();
    state.SetIterationTime(plugin.TaskHandler().WaitForCall() - static_cast<double>(due));
    // The runs are still being recorded. The plug-in would wait in vain for that if it were
    // unloaded now.
    plugin.WaitUntilAsleep();
  }
}
BENCHMARK(DueSecondToHandler)
    ->Arg(1)
    ->Arg(1000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
