// The arithmetic of one trigger.
#include "bench/PlainCalendar.h"
#include "model/LocalZone.h"
#include "model/TaskTrigger.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <string>

namespace {

using PlainRule = PlainCalendar::Rule;

constexpr long InSpring2005 = 1109635200;
constexpr long In2020 = 1580000000;
constexpr long AtThree = 3 * 3600;

/// A schedule as the scheduler reads it, and as the plain code does.
struct Schedule {
  const wchar_t* m_Type;
  const wchar_t* m_Fields;
  PlainRule m_Rule;
};

const Schedule Daily = {L"1", L"<DaysInterval>1</DaysInterval>", {PlainRule::OnDaysOfWeek, 0x7F}};
const Schedule MondayToFriday = {L"2",
                                 L"<WeeksInterval>1</WeeksInterval><DaysOfWeek>62</DaysOfWeek>",
                                 {PlainRule::OnDaysOfWeek, 0x3E}};
const Schedule On31 = {L"3",
                       L"<DaysOfMonth>1073741824</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear>",
                       {PlainRule::OnDayOfMonth, 31}};
const Schedule OnFirstMonday = {
    L"4",
    L"<Week>1</Week><DaysOfWeek>2</DaysOfWeek><MonthsOfYear>4095</MonthsOfYear>",
    {PlainRule::OnFirstWeekday, 1}};
const Schedule On29February = {
    L"3",
    L"<DaysOfMonth>268435456</DaysOfMonth><MonthsOfYear>2</MonthsOfYear>",
    {PlainRule::OnDayOfMonth, 29, 2}};
const Schedule On30February = {
    L"3",
    L"<DaysOfMonth>536870912</DaysOfMonth><MonthsOfYear>2</MonthsOfYear>",
    {PlainRule::OnDayOfMonth, 30, 2}};

CTaskTrigger Trigger(const std::wstring& type, const std::wstring& fields, long* lastRun) {
  const std::wstring element = L"<Trigger Type=\"" + type +
                               L"\"><BeginDate>2005/03/01 03:00:00</BeginDate>" + fields +
                               L"</Trigger>";
  return CTaskTrigger(element.c_str(), lastRun);
}

void TestWhetherDue(benchmark::State& state, CTaskTrigger& trigger) {
  long sleepSeconds = Nox::SecondsPerDay;
  bool late = false, expired = false, changed = false;
  if (trigger.IsDue(false, false, sleepSeconds, late, expired, changed)) {
    state.SkipWithError("the trigger is due");
  }
}

void DueTest(benchmark::State& state, const std::wstring& type, const std::wstring& fields,
             long lastRun) {
  CTaskTrigger trigger = Trigger(type, fields, &lastRun);
  for (auto _ : state) {
    TestWhetherDue(state, trigger);
  }
}
BENCHMARK_CAPTURE(DueTest, Daily, Daily.m_Type, Daily.m_Fields, time(nullptr));
BENCHMARK_CAPTURE(DueTest, OnceAndRan, L"0", L"", In2020);
BENCHMARK_CAPTURE(DueTest, On30FebruaryAndRan, On30February.m_Type, On30February.m_Fields,
                  InSpring2005 + Nox::SecondsPerDay);

// With another last run each time, so that the answer that was kept is of no use.
void DueTestWithNoKeptAnswer(benchmark::State& state) {
  const long now = time(nullptr);
  long lastRun = now;
  CTaskTrigger trigger = Trigger(Daily.m_Type, Daily.m_Fields, &lastRun);
  for (auto _ : state) {
    lastRun = lastRun == now ? now - 1 : now;
    TestWhetherDue(state, trigger);
  }
}
BENCHMARK(DueTestWithNoKeptAnswer);

void TwoComparisons(benchmark::State& state) {
  long now = time(nullptr);
  long begin = InSpring2005;
  long end = now + Nox::SecondsPerDay;
  for (auto _ : state) {
    benchmark::DoNotOptimize(now);
    benchmark::DoNotOptimize(begin);
    benchmark::DoNotOptimize(end);
    bool isWithin = now >= begin && now < end;
    benchmark::DoNotOptimize(isWithin);
  }
}
BENCHMARK(TwoComparisons);

void NextRun(benchmark::State& state, const Schedule& schedule) {
  long lastRun = CTaskTrigger::NoTime;
  CTaskTrigger trigger = Trigger(schedule.m_Type, schedule.m_Fields, &lastRun);
  const long now = time(nullptr);
  for (auto _ : state) {
    trigger.CalculateNextRunTime(now, false);
  }
}

// The limit is worth something only while it finds the same.
void PlainNextRun(benchmark::State& state, const Schedule& schedule) {
  long lastRun = CTaskTrigger::NoTime;
  CTaskTrigger trigger = Trigger(schedule.m_Type, schedule.m_Fields, &lastRun);
  const PlainCalendar::OffsetTable offsets;
  const long now = time(nullptr);
  trigger.CalculateNextRunTime(now, false);
  for (auto _ : state) {
    long next = PlainCalendar::NextRun(offsets, schedule.m_Rule, AtThree, now);
    benchmark::DoNotOptimize(next);
    if (next != trigger.m_NextRun) {
      state.SkipWithError("the plain code finds another next run");
    }
  }
}

#define NOX_BENCHMARK_NEXT_RUN(schedule)          \
  BENCHMARK_CAPTURE(NextRun, schedule, schedule); \
  BENCHMARK_CAPTURE(PlainNextRun, schedule, schedule)
NOX_BENCHMARK_NEXT_RUN(Daily);
NOX_BENCHMARK_NEXT_RUN(MondayToFriday);
NOX_BENCHMARK_NEXT_RUN(On31);
NOX_BENCHMARK_NEXT_RUN(OnFirstMonday);
NOX_BENCHMARK_NEXT_RUN(On29February);
NOX_BENCHMARK_NEXT_RUN(On30February);

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
