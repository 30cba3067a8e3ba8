// The arithmetic of one trigger.
#include "model/TaskTrigger.h"

#include <benchmark/benchmark.h>

#include <ctime>

namespace {

CTaskTrigger Daily(long* lastRun) {
  return CTaskTrigger(L"<Trigger Type=\"1\"><BeginDate>2005/03/01 03:00:00</BeginDate></Trigger>",
                      lastRun);
}

void NotDueDailyTrigger(benchmark::State& state) {
  long lastRun = time(nullptr);
  CTaskTrigger trigger = Daily(&lastRun);
  for (auto _ : state) {
    long sleepSeconds = 86400;
    bool late = false, expired = false, changed = false;
    benchmark::DoNotOptimize(trigger.IsDue(false, false, sleepSeconds, late, expired, changed));
  }
}
BENCHMARK(NotDueDailyTrigger);

void NextRunOfDailyTrigger(benchmark::State& state) {
  long lastRun = -1;
  CTaskTrigger trigger = Daily(&lastRun);
  const long now = time(nullptr);
  for (auto _ : state) {
    trigger.CalculateNextRunTime(now, false);
  }
}
BENCHMARK(NextRunOfDailyTrigger);

// A start that does not exist: the search goes its whole length.
void NextRunOn30February(benchmark::State& state) {
  long lastRun = -1;
  CTaskTrigger trigger(
      L"<Trigger Type=\"3\"><BeginDate>2005/03/01 03:00:00</BeginDate>"
      L"<DaysOfMonth>536870912</DaysOfMonth><MonthsOfYear>2</MonthsOfYear></Trigger>",
      &lastRun);
  const long now = 1109635200;
  for (auto _ : state) {
    trigger.CalculateNextRunTime(now, false);
  }
}
BENCHMARK(NextRunOn30February)->Unit(benchmark::kMicrosecond);

}  // namespace
