#include "tests/support/BodyThread.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AEvent.h>
#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <string>
#include <vector>

namespace {

using BaseSDK::AEvent;
using TestSupport::BodyThread;
using VirtualTime::VirtualClock;

class VirtualClockTest : public testing::Test {
 protected:
  static constexpr long Begin = 1109664000;

  VirtualClockTest() { m_Clock.Start(Begin); }
  VirtualClock& m_Clock = VirtualClock::Instance();
};

TEST_F(VirtualClockTest, AnswersTimeHereAndInTheSharedLibraries) {
  m_Clock.RunUntil(Begin + 5);
  std::time_t stored = 0;
  EXPECT_EQ(std::time(&stored), Begin + 5);
  EXPECT_EQ(stored, Begin + 5);
  EXPECT_EQ(BaseSDK::ADateTime::Now().GetTime(), Begin + 5);
  EXPECT_EQ(m_Clock.Now(), Begin + 5);
}

TEST_F(VirtualClockTest, LeavesTheFineClocksOfTheSystemAlone) {
  const auto realNow = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  EXPECT_GT(realNow, Begin + 86400 * 365L);
}

TEST_F(VirtualClockTest, StandsStillUnlessToldToMove) {
  BodyThread thread([&] { m_Clock.Sleep(10); });
  m_Clock.Settle();
  EXPECT_EQ(m_Clock.NowMilliseconds(), std::int64_t{Begin} * 1000);
  EXPECT_TRUE(thread.IsRunning());
  m_Clock.RunFor(10);
}

TEST_F(VirtualClockTest, SecondsAreWholeAndRoundedDown) {
  m_Clock.RunFor(999);
  EXPECT_EQ(std::time(nullptr), Begin);
  m_Clock.RunFor(1);
  EXPECT_EQ(std::time(nullptr), Begin + 1);
  m_Clock.Start(-1);
  m_Clock.RunFor(1);
  EXPECT_EQ(std::time(nullptr), -1);
}

TEST_F(VirtualClockTest, TimeStaysInsideTheSigned32BitRange) {
  constexpr long Last = 2147483647L;
  m_Clock.Start(Last - 1);
  m_Clock.RunFor(86400000);
  EXPECT_EQ(std::time(nullptr), Last);
  EXPECT_EQ(m_Clock.NowMilliseconds(), (std::int64_t{Last} - 1) * 1000 + 86400000);
  m_Clock.Start(-Last - 1);
  m_Clock.StepWallClock(-10);
  EXPECT_EQ(std::time(nullptr), -Last - 1);
}

TEST_F(VirtualClockTest, RunUntilAPastTimeDoesOnlyWhatIsDueNow) {
  int calls = 0;
  m_Clock.At(Begin, [&] { ++calls; });
  m_Clock.At(Begin + 1, [&] { ++calls; });
  m_Clock.RunUntil(Begin - 100);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(m_Clock.Now(), Begin);
}

TEST_F(VirtualClockTest, CallsAreMadeInOrderBeforeTheWaitsOfTheirSecond) {
  std::string order;
  BodyThread thread([&] {
    m_Clock.Sleep(10000);
    order += 't';
  });
  m_Clock.At(Begin + 10, [&] { order += '1'; });
  m_Clock.At(Begin + 10, [&] { order += '2'; });
  m_Clock.At(Begin + 9, [&] { order += '0'; });
  m_Clock.RunUntil(Begin + 10);
  EXPECT_EQ(order, "012t");
}

TEST_F(VirtualClockTest, TimeStandsStillDuringACallUnlessTheCallLetsItMove) {
  std::vector<std::int64_t> seen;
  m_Clock.At(Begin + 10, [&] {
    seen.push_back(m_Clock.NowMilliseconds() % 1000000);
    m_Clock.Sleep(100);
    seen.push_back(m_Clock.NowMilliseconds() % 1000000);
    m_Clock.RunUntil(Begin + 20);
  });
  m_Clock.RunUntil(Begin + 15);
  EXPECT_EQ(seen, (std::vector<std::int64_t>{10000, 10100}));
  EXPECT_EQ(m_Clock.Now(), Begin + 20);
}

TEST_F(VirtualClockTest, CallsMaySetTheClock) {
  long seen = 0;
  m_Clock.At(Begin + 10, [&] { m_Clock.StepWallClock(3600); });
  m_Clock.At(Begin + 20, [&] { seen = m_Clock.Now(); });
  m_Clock.RunUntil(Begin + 3615);
  EXPECT_EQ(seen, Begin + 3610);  // overdue by the step: at once
  EXPECT_EQ(m_Clock.Now(), Begin + 3615);
}

TEST_F(VirtualClockTest, RunUntilFollowsTheWallClockAndRunForTheSteadyOne) {
  m_Clock.At(Begin + 10, [&] { m_Clock.StepWallClock(-5); });
  m_Clock.RunUntil(Begin + 12);
  EXPECT_EQ(m_Clock.Now(), Begin + 12);
  m_Clock.At(Begin + 15, [&] { m_Clock.StepWallClock(-1000); });
  m_Clock.RunFor(10000);
  EXPECT_EQ(m_Clock.Now(), Begin + 22 - 1000);
}

TEST_F(VirtualClockTest, StartAgainDropsWhatWasPlanned) {
  bool called = false;
  m_Clock.At(Begin + 10, [&] { called = true; });
  m_Clock.Start(Begin);
  m_Clock.RunUntil(Begin + 20);
  EXPECT_FALSE(called);
}

TEST_F(VirtualClockTest, YearOfHourlyWaitsPassesWithoutSleeping) {
  long turns = 0;
  AEvent event(AEvent::AutoReset);
  BodyThread thread([&] {
    while (m_Clock.Now() < Begin + 365L * 86400) {
      (void)event.Wait(3600000, static_cast<BaseSDK::AClockSkewBehavior>(15));
      ++turns;
    }
  });
  m_Clock.RunUntil(Begin + 365L * 86400);
  EXPECT_EQ(turns, 365 * 24);
}

}  // namespace
