// The arithmetic of one trigger.
#include "model/LocalZone.h"
#include "model/TaskTrigger.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <string>

namespace {

constexpr long InSpring2005 = 1109635200;

CTaskTrigger Trigger(const std::wstring& rule, long* lastRun) {
  const std::wstring element = L"<Trigger " + rule.substr(0, rule.find(L'<')) +
                               L"><BeginDate>2005/03/01 03:00:00</BeginDate>" +
                               rule.substr(rule.find(L'<')) + L"</Trigger>";
  return CTaskTrigger(element.c_str(), lastRun);
}

const std::wstring Once = L"Type=\"0\"<!-- -->";
const std::wstring Daily = L"Type=\"1\"<!-- -->";
const std::wstring On31 =
    L"Type=\"3\"<DaysOfMonth>1073741824</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear>";
const std::wstring OnFirstMonday =
    L"Type=\"4\"<Week>1</Week><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>4095</MonthsOfYear>";
const std::wstring On29February =
    L"Type=\"3\"<DaysOfMonth>268435456</DaysOfMonth><MonthsOfYear>2</MonthsOfYear>";
const std::wstring On30February =
    L"Type=\"3\"<DaysOfMonth>536870912</DaysOfMonth><MonthsOfYear>2</MonthsOfYear>";

void DueTest(benchmark::State& state, const std::wstring& rule, long lastRun) {
  CTaskTrigger trigger = Trigger(rule, &lastRun);
  for (auto _ : state) {
    long sleepSeconds = 86400;
    bool late = false, expired = false, changed = false;
    benchmark::DoNotOptimize(trigger.IsDue(false, false, sleepSeconds, late, expired, changed));
  }
}
BENCHMARK_CAPTURE(DueTest, Daily, Daily, time(nullptr));
BENCHMARK_CAPTURE(DueTest, OnceAndRan, Once, InSpring2005 + 86400);
BENCHMARK_CAPTURE(DueTest, On30FebruaryAndRan, On30February, InSpring2005 + 86400);

void NextRun(benchmark::State& state, const std::wstring& rule) {
  long lastRun = -1;
  CTaskTrigger trigger = Trigger(rule, &lastRun);
  const long now = time(nullptr);
  for (auto _ : state) {
    trigger.CalculateNextRunTime(now, false);
  }
}
BENCHMARK_CAPTURE(NextRun, Daily, Daily);
BENCHMARK_CAPTURE(NextRun, On31, On31);
BENCHMARK_CAPTURE(NextRun, OnFirstMonday, OnFirstMonday);
BENCHMARK_CAPTURE(NextRun, On29February, On29February);
BENCHMARK_CAPTURE(NextRun, On30February, On30February);

// What a changed zone costs the monitor, once.
void MakingOfTheZone(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(Nox::LocalZone());
  }
}
BENCHMARK(MakingOfTheZone)->Unit(benchmark::kMillisecond);

void LookAtTheZone(benchmark::State& state) {
  for (auto _ : state) {
    Nox::LocalZone::Refresh();
  }
}
BENCHMARK(LookAtTheZone);

}  // namespace
