// The whole plug-in over many task files.
#include "bench/Workbench.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Workbench::CpuNow;
using Workbench::FineNow;

long CountOf(const benchmark::State& state) {
  return static_cast<long>(state.range(0));
}

/// So many files of daily tasks. They stay until another number is wanted: to make them takes
/// longer than what is measured.
const Workbench::TaskDirectory& DailyTaskFiles(long count) {
  static std::unique_ptr<Workbench::TaskDirectory> directory;
  static long held = 0;
  if (held != count) {
    directory = std::make_unique<Workbench::TaskDirectory>();
    directory->Fill(count, [](long number) { return Workbench::DailyTask(number); });
    held = count;
  }
  return *directory;
}

// So many that they take some milliseconds: until then the system has not counted all the time of a
// thread that runs on another processor.
long PassesOver(long tasks) {
  return std::clamp(300000 / tasks, 5L, 10000L);
}

// The time of an iteration is that of the load; "pass" is that of one of many passes.
void LoadAndPass(benchmark::State& state) {
  const Workbench::TaskDirectory& directory = DailyTaskFiles(CountOf(state));
  const long passes = PassesOver(CountOf(state));
  double quickest = std::numeric_limits<double>::max();
  for (auto _ : state) {
    Workbench::Plugin plugin(directory);
    const double start = CpuNow();
    plugin.Start();
    state.SetIterationTime(CpuNow() - start);
    const double startOfPasses = CpuNow();
    for (long i = 0; i < passes; ++i) {
      plugin.Pass();
    }
    quickest = std::min(quickest, (CpuNow() - startOfPasses) / static_cast<double>(passes));
  }
  state.counters["pass"] = quickest;
}

void ReadAndParse(const char* file) {
  char bytes[4096];
  const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
  const ssize_t count = read(descriptor, bytes, sizeof bytes);
  close(descriptor);
  pugi::xml_document parsed;
  benchmark::DoNotOptimize(
      parsed.load_buffer_inplace(bytes, count > 0 ? static_cast<std::size_t>(count) : 0,
                                 pugi::parse_default, pugi::encoding_utf8));
}

void ReadAndParseFiles(benchmark::State& state) {
  const Workbench::TaskDirectory& directory = DailyTaskFiles(CountOf(state));
  std::vector<std::string> files;
  for (long i = 0; i < CountOf(state); ++i) {
    files.push_back(directory.File(i).string());
  }
  for (auto _ : state) {
    const double start = CpuNow();
    for (const std::string& file : files) {
      ReadAndParse(file.c_str());
    }
    state.SetIterationTime(CpuNow() - start);
  }
}

void WalkOverStructs(benchmark::State& state) {
  struct PlainTrigger {
    long m_NextRun;
    long m_End;
  };
  const long now = time(nullptr);
  const std::vector<PlainTrigger> triggers(static_cast<std::size_t>(CountOf(state)),
                                           {now + 3600, now + 7200});
  for (auto _ : state) {
    long due = 0;
    for (const PlainTrigger& trigger : triggers) {
      due += trigger.m_NextRun <= now && now < trigger.m_End ? 1 : 0;
      benchmark::DoNotOptimize(due);
    }
  }
}

// By number of tasks, so that their files are made once for each.
[[maybe_unused]] const bool GrowthIsRegistered = [] {
  for (const long count : {10L, 100L, 1000L, 10000L, 100000L}) {
    const auto add = [count](const char* name, void (*function)(benchmark::State&)) {
      return benchmark::RegisterBenchmark(name, function)
          ->Arg(count)
          ->Unit(benchmark::kMicrosecond);
    };
    // Most of the time of a short load passes unmeasured, while the plug-in is unloaded.
    add("LoadAndPass", LoadAndPass)->Iterations(count <= 1000 ? 5 : 1)->UseManualTime();
    add("ReadAndParseFiles", ReadAndParseFiles)->UseManualTime();
    add("WalkOverStructs", WalkOverStructs);
  }
  return true;
}();

// From the second at which all tasks are due to the handler's first call.
void DueSecondToHandler(benchmark::State& state) {
  for (auto _ : state) {
    const Workbench::TaskDirectory directory;
    // Far enough ahead for the files to be written and loaded before it.
    const long due = time(nullptr) + 2 + CountOf(state) / 1000;
    directory.Fill(CountOf(state),
                   [due](long number) { return Workbench::TaskDueAt(due, number); });
    Workbench::Plugin plugin(directory);
    plugin.Start();
    plugin.Pass();
    state.SetIterationTime(plugin.TaskHandler().WaitForCall() - static_cast<double>(due));
    // The plug-in would wait in vain for the runs to be recorded if it were unloaded now.
    plugin.WaitUntilRecorded();
    state.counters["recorded"] = FineNow() - static_cast<double>(due);
  }
}
BENCHMARK(DueSecondToHandler)
    ->Arg(1)
    ->Arg(1000)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// How much later than a second begins the C library says so: nobody who reads whole seconds can be
// earlier.
void TickOfTheClock(benchmark::State& state) {
  for (auto _ : state) {
    const long second = time(nullptr) + 1;
    const timespec until{second, 0};
    clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &until, nullptr);
    while (time(nullptr) < second) {
    }
    state.SetIterationTime(FineNow() - static_cast<double>(second));
  }
}
BENCHMARK(TickOfTheClock)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void AppendRecords(benchmark::State& state) {
  const Workbench::TaskDirectory directory;
  const std::string record = "2026-01-01 00:00:00 task0000 Started\n";
  for (auto _ : state) {
    const double start = FineNow();
    const int file =
        open(directory.File(0).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    for (long i = 0; i < CountOf(state); ++i) {
      benchmark::DoNotOptimize(write(file, record.data(), record.size()));
    }
    fsync(file);
    close(file);
    state.SetIterationTime(FineNow() - start);
  }
}
BENCHMARK(AppendRecords)->Arg(1000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
