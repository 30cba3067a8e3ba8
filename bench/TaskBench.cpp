// One task: built, held in memory, its run registered.
#include "bench/Workbench.h"
#include "model/Task.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <malloc.h>

#include <array>
#include <map>
#include <memory>
#include <string>

namespace {

using BaseSDK::AString;

void BuildTask(benchmark::State& state) {
  const AString texts[] = {AString::FromUtf8(Workbench::DailyTask(1)),
                           AString::FromUtf8(Workbench::DailyTask(2))};
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(CTask(nullptr, L"T1", texts[next]));
    next = 1 - next;
  }
  state.counters["document_bytes"] = static_cast<double>(texts[0].Length());
}
BENCHMARK(BuildTask)->Unit(benchmark::kMicrosecond);

void ParseDocument(benchmark::State& state) {
  const std::string document = Workbench::DailyTask(1);
  for (auto _ : state) {
    pugi::xml_document parsed;
    benchmark::DoNotOptimize(parsed.load_buffer(document.data(), document.size(),
                                                pugi::parse_default, pugi::encoding_utf8));
  }
}
BENCHMARK(ParseDocument)->Unit(benchmark::kMicrosecond);

/// What there is to know of a daily task, and nothing else.
struct PlainTask {
  std::string m_Document;
  std::array<std::uint32_t, 4> m_Handler;
  std::uint32_t m_LastRun;
  std::array<std::uint32_t, 12> m_Trigger;
};

/// The bytes that each of so many objects takes in a map; `make` makes an entry from its ID.
template <class Map, class Make>
double BytesOfEach(long count, Make make) {
  Map map;
  const auto before = mallinfo2().uordblks;
  for (long i = 0; i < count; ++i) {
    map.insert(make("task" + std::to_string(i)));
  }
  return static_cast<double>(mallinfo2().uordblks - before) / static_cast<double>(count);
}

void MemoryOfTasks(benchmark::State& state) {
  const std::string document = Workbench::DailyTask(1);
  using Map = std::map<AString, std::unique_ptr<CTask>>;
  for (auto _ : state) {
    state.counters["bytes_each"] = BytesOfEach<Map>(10000, [&](const std::string& id) {
      const AString taskID = AString::FromUtf8(id);
      return Map::value_type(taskID,
                             std::make_unique<CTask>(nullptr, taskID, AString::FromUtf8(document)));
    });
  }
}
BENCHMARK(MemoryOfTasks)->Iterations(1);

void MemoryOfPlainTasks(benchmark::State& state) {
  const std::string document = Workbench::DailyTask(1);
  using Map = std::map<std::string, PlainTask>;
  for (auto _ : state) {
    state.counters["bytes_each"] = BytesOfEach<Map>(10000, [&](const std::string& id) {
      return Map::value_type(id, PlainTask{document, {}, 0, {}});
    });
  }
}
BENCHMARK(MemoryOfPlainTasks)->Iterations(1);

// Rewrites the document, stores it and makes it safe.
void RegisterRun(benchmark::State& state) {
  const Workbench::TaskDirectory directory;
  const Workbench::Store store(directory);
  Workbench::Handler handler;
  const Workbench::Host host(directory.Path(), handler);
  TaskSchedulerObject_i scheduler;
  if (scheduler.Initialize() != 1) {
    state.SkipWithError("the plug-in did not start");
  }
  CTask task(&scheduler, L"T1", AString::FromUtf8(Workbench::DailyTask(1)));
  for (auto _ : state) {
    task.RegisterRun();
    BaseSDK::AFileSystem::Current().MakeSafe();
  }
  (void)scheduler.Uninitialize(1);
}
BENCHMARK(RegisterRun)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
