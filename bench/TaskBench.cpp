// One task: built, held in memory, its run registered.
#include "bench/Workbench.h"
#include "model/Task.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <memory>
#include <vector>

namespace {

using BaseSDK::AString;

void BuildTask(benchmark::State& state) {
  const std::string document = Workbench::DailyTask();
  const AString text = AString::FromUtf8(document);
  for (auto _ : state) {
    benchmark::DoNotOptimize(CTask(nullptr, L"T1", text));
  }
  state.counters["document_bytes"] = static_cast<double>(document.size());
}
BENCHMARK(BuildTask)->Unit(benchmark::kMicrosecond);

void MemoryOfLoadedTasks(benchmark::State& state) {
  const AString text = AString::FromUtf8(Workbench::DailyTask());
  const auto count = static_cast<std::size_t>(state.range(0));
  double bytes = 0;
  for (auto _ : state) {
    std::vector<std::unique_ptr<CTask>> tasks;
    tasks.reserve(count);
    const auto before = mallinfo2().uordblks;
    for (std::size_t i = 0; i < count; ++i) {
      tasks.push_back(std::make_unique<CTask>(nullptr, L"T1", text));
    }
    bytes = static_cast<double>(mallinfo2().uordblks - before);
  }
  state.counters["bytes_per_task"] = bytes / static_cast<double>(count);
}
BENCHMARK(MemoryOfLoadedTasks)->Arg(1000)->Arg(10000)->Iterations(1);

// Rewrites the document and stores it, flushed to disk.
void RegisterRun(benchmark::State& state) {
  const Workbench::TaskDirectory directory;
  Workbench::Handler handler;
  const Workbench::Host host(directory.Path(), handler);
  TaskSchedulerObject_i scheduler;
  if (scheduler.Initialize() != 1) {
    state.SkipWithError("the plug-in did not start");
  }
  CTask task(&scheduler, L"T1", AString::FromUtf8(Workbench::DailyTask()));
  for (auto _ : state) {
    task.RegisterRun();
  }
  (void)scheduler.Uninitialize(1);
}
BENCHMARK(RegisterRun)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
