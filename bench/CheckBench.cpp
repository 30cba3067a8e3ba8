// The check of a document, with a look at the two years ahead.
#include "agent/document/TaskDocumentCheck.h"
#include "agent/schedule/ScheduleComparison.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <string>

namespace {

using NoxAgent::CheckTaskDocument;
using NoxAgent::LocalCalendar;
using NoxAgent::SchedulerTrigger;
using NoxAgent::TriggerRule;

constexpr long Day = 86400;

void ReadTheZone(benchmark::State& state) {
  const long now = std::time(nullptr);
  for (auto _ : state) {
    benchmark::DoNotOptimize(NoxAgent::CalendarForCheck(now));
  }
}
BENCHMARK(ReadTheZone)->Unit(benchmark::kMicrosecond);

// Argument: the duration in minutes, repeated every ten.
void CompareTwoYearsOfADailyTrigger(benchmark::State& state) {
  const long now = std::time(nullptr);
  const LocalCalendar calendar = NoxAgent::CalendarForCheck(now);
  TriggerRule rule;
  rule.m_Type = TriggerRule::Daily;
  rule.m_Begin = now + Day;
  rule.m_DurationSeconds = static_cast<long>(state.range(0)) * 60;
  rule.m_IntervalSeconds = 600;
  const SchedulerTrigger trigger(rule, calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(NoxAgent::CompareSchedule(trigger, calendar, now));
  }
}
BENCHMARK(CompareTwoYearsOfADailyTrigger)
    ->Arg(0)
    ->Arg(120)
    ->Arg(1430)
    ->Unit(benchmark::kMicrosecond);

// About as many as a document may have.
void CheckManyTriggers(benchmark::State& state) {
  const long now = std::time(nullptr);
  const LocalCalendar calendar = NoxAgent::CalendarForCheck(now);
  std::string triggers;
  for (long i = 0; i < state.range(0); ++i) {
    triggers += "<Trigger Type=\"1\"><BeginDate>2035/01/01 08:00:00</BeginDate></Trigger>";
  }
  const auto document = BaseSDK::AString::FromUtf8(
      "<Task><HandlerCLSID>{B0000000-0000-0000-0000-000000000001}</HandlerCLSID><Schedule>" +
      triggers + "</Schedule></Task>");
  for (auto _ : state) {
    benchmark::DoNotOptimize(CheckTaskDocument(document, now, &calendar));
  }
}
BENCHMARK(CheckManyTriggers)->Arg(1)->Arg(1000)->Arg(14000)->Unit(benchmark::kMillisecond);

}  // namespace
