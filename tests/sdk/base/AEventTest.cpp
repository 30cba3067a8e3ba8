#include "SystemClockDouble.h"

#include <BaseSDK/AEvent.h>

#include <gtest/gtest.h>

#include <sys/timerfd.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

namespace BaseSDK {
namespace {

constexpr AClockSkewBehavior AsTheMonitor =
    ClockSkewEndOnSet | ClockSkewEndOnResume | ClockSkewAlignToSecond | ClockSkewNeverEarly;
static_assert(AsTheMonitor == 15);

const std::vector<AClockSkewBehavior>& AllBehaviors() {
  static const std::vector<AClockSkewBehavior> all = [] {
    std::vector<AClockSkewBehavior> values;
    for (unsigned value = 0; value < 16; ++value) {
      values.push_back(static_cast<AClockSkewBehavior>(value));
    }
    return values;
  }();
  return all;
}

TEST(AEvent, IsNotSetAtFirst) {
  for (const AClockSkewBehavior behavior : AllBehaviors()) {
    AEvent event(AEvent::AutoReset);
    EXPECT_EQ(event.Wait(0, behavior), AEvent::TimedOut) << behavior;
    EXPECT_EQ(event.Reset(), 0);
  }
}

TEST(AEvent, OneWaitConsumesAnEventThatResetsItself) {
  for (const unsigned long milliseconds : {0UL, 5UL, 1000UL, 4294967295UL}) {
    for (const AClockSkewBehavior behavior : AllBehaviors()) {
      AEvent event(AEvent::AutoReset);
      EXPECT_EQ(event.Set(), 1);
      EXPECT_EQ(event.Set(), 1);
      EXPECT_EQ(event.Wait(milliseconds, behavior), AEvent::WasSet) << milliseconds << behavior;
      EXPECT_EQ(event.Wait(0, behavior), AEvent::TimedOut) << milliseconds << ' ' << behavior;
    }
  }
}

TEST(AEvent, StaysSetUntilResetWhenManual) {
  AEvent event(AEvent::ManualReset);
  (void)event.Set();
  EXPECT_EQ(event.Wait(0, AsTheMonitor), AEvent::WasSet);
  EXPECT_EQ(event.Wait(1000, AsTheMonitor), AEvent::WasSet);
  EXPECT_EQ(event.Reset(), 1);
  EXPECT_EQ(event.Reset(), 0);
  EXPECT_EQ(event.Wait(0, AsTheMonitor), AEvent::TimedOut);
}

TEST(AEvent, ResetTakesBackASetEvent) {
  AEvent event(AEvent::AutoReset);
  (void)event.Set();
  EXPECT_EQ(event.Reset(), 1);
  EXPECT_EQ(event.Wait(0, ClockSkewIgnore), AEvent::TimedOut);
}

TEST(AEvent, TimesOutNotBeforeItsTime) {
  for (const AClockSkewBehavior behavior : AllBehaviors()) {
    AEvent event(AEvent::AutoReset);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(event.Wait(11, behavior), AEvent::TimedOut) << behavior;
    // The wall clock, which all behaviours but the first go by, may be slewed a little.
    const auto tolerance = std::chrono::milliseconds(behavior == ClockSkewIgnore ? 0 : 1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin + tolerance, std::chrono::milliseconds(11))
        << behavior;
  }
}

TEST(AEvent, AnotherThreadEndsTheWait) {
  for (const AClockSkewBehavior behavior : AllBehaviors()) {
    AEvent event(AEvent::AutoReset);
    AEvent done(AEvent::AutoReset);
    std::thread waiter([&] {
      EXPECT_EQ(event.Wait(3600000, behavior), AEvent::WasSet) << behavior;
      (void)done.Set();
    });
    (void)event.Set();
    EXPECT_EQ(done.Wait(60000, ClockSkewIgnore), AEvent::WasSet) << behavior;
    waiter.join();
  }
}

TEST(AEvent, EverySetWakesOneOfSeveralWaiters) {
  AEvent event(AEvent::AutoReset);
  AEvent woken(AEvent::AutoReset);
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.emplace_back([&] {
      EXPECT_EQ(event.Wait(60000, AsTheMonitor), AEvent::WasSet);
      (void)woken.Set();
    });
  }
  for (int i = 0; i < 3; ++i) {
    (void)event.Set();
    EXPECT_EQ(woken.Wait(60000, ClockSkewIgnore), AEvent::WasSet);
  }
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
}

TEST(AEvent, WholeSecondsEndAtASecondOfTheWallClock) {
  for (const AClockSkewBehavior behavior : {AsTheMonitor, ClockSkewAlignToSecond}) {
    SystemClockDouble machine;
    AEvent event(AEvent::AutoReset);
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(event.Wait(1000, behavior), AEvent::TimedOut);
    ASSERT_EQ(machine.m_Timers.size(), 2u);
    EXPECT_EQ(machine.m_Timers[1].m_Nanoseconds, 0);
    EXPECT_GE(machine.m_Timers[1].m_Seconds, before + 1);
    if (behavior == AsTheMonitor) {
      EXPECT_GE(std::time(nullptr), machine.m_Timers[1].m_Seconds);
    }
  }
}

TEST(AEvent, SecondsCountFromWhatTimeShowsAndNotFromTheFineClock) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  machine.m_LateCalls = 1;  // the fine clock is in the next second already
  EXPECT_EQ(event.Wait(1000, AsTheMonitor), AEvent::TimedOut);
  ASSERT_EQ(machine.m_Timers.size(), 2u);
  EXPECT_EQ(machine.m_Timers[1].m_Seconds, machine.m_LateTime + 1);
  EXPECT_GE(std::time(nullptr), machine.m_LateTime + 1);
}

TEST(AEvent, NeverWakesIntoTheSecondBefore) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  for (int round = 0; round < 2; ++round) {
    machine.m_Timers.clear();
    machine.m_LateTime = 0;
    machine.m_LateCalls = 4;  // one call takes the deadline, three are asked when it has passed
    const std::time_t asked = std::time(nullptr) + 1;
    EXPECT_EQ(event.Wait(1000, AsTheMonitor), AEvent::TimedOut);
    EXPECT_EQ(machine.m_LateCalls, 0);
    EXPECT_GE(machine.m_LastTime, machine.m_Timers.at(1).m_Seconds);
    EXPECT_GE(std::time(nullptr), asked);
  }
}

TEST(AEvent, MayWakeIntoTheSecondBeforeWhenThatIsNotRuledOut) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  machine.m_LateCalls = 1000;
  EXPECT_EQ(event.Wait(1, ClockSkewEndOnSet), AEvent::TimedOut);
  EXPECT_EQ(machine.m_LateCalls, 1000);
}

TEST(AEvent, ASetEventEndsTheWaitForTheTick) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  AEvent done(AEvent::AutoReset);
  machine.m_LateCalls = 1000000000;  // time() never gets there
  std::thread waiter([&] {
    EXPECT_EQ(event.Wait(1000, AsTheMonitor), AEvent::WasSet);
    (void)done.Set();
  });
  while (machine.m_LateCalls > 999999990) {
    std::this_thread::yield();
  }
  (void)event.Set();
  EXPECT_EQ(done.Wait(60000, ClockSkewIgnore), AEvent::WasSet);
  waiter.join();
}

TEST(AEvent, PartsOfASecondAreNotAligned) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  timespec before{};
  (void)clock_gettime(CLOCK_REALTIME, &before);
  EXPECT_EQ(event.Wait(7, AsTheMonitor), AEvent::TimedOut);
  ASSERT_EQ(machine.m_Timers.size(), 2u);
  const auto nanoseconds = [](std::time_t seconds, long rest) {
    return std::int64_t{seconds} * 1000000000 + rest;
  };
  EXPECT_GE(nanoseconds(machine.m_Timers[1].m_Seconds, machine.m_Timers[1].m_Nanoseconds),
            nanoseconds(before.tv_sec, before.tv_nsec) + 7000000);
}

TEST(AEvent, WatchesTheWallClockOnlyWhenAsked) {
  for (const AClockSkewBehavior behavior : AllBehaviors()) {
    SystemClockDouble machine;
    AEvent event(AEvent::AutoReset);
    EXPECT_EQ(event.Wait(1, behavior), AEvent::TimedOut);
    const bool watches = (behavior & (ClockSkewEndOnSet | ClockSkewEndOnResume)) != 0;
    EXPECT_EQ(machine.m_Timers.size(), behavior == ClockSkewIgnore ? 0u : 2u) << behavior;
    for (const auto& timer : machine.m_Timers) {
      EXPECT_EQ(timer.m_Flags, TFD_TIMER_ABSTIME | (watches ? TFD_TIMER_CANCEL_ON_SET : 0));
    }
  }
}

TEST(AEvent, ClockSetWhileTheWaitBeginsEndsIt) {
  SystemClockDouble machine;
  machine.m_ClockSetBefore = 1;  // between reading the clock and arming the timer
  AEvent event(AEvent::AutoReset);
  EXPECT_EQ(event.Wait(3600000, AsTheMonitor), AEvent::ClockChanged);
}

TEST(AEvent, WaitsPastTheEndOfTimeReachItsLastSecond) {
  SystemClockDouble machine;
  AEvent event(AEvent::AutoReset);
  std::thread setter([&] { (void)event.Set(); });
  EXPECT_EQ(event.Wait(4294967295UL, AsTheMonitor), AEvent::WasSet);
  setter.join();
  for (const auto& timer : machine.m_Timers) {
    EXPECT_GT(timer.m_Seconds, 0);
  }
}

TEST(AEvent, WaitsWithoutATimerToBeHad) {
  SystemClockDouble machine;
  machine.m_NoTimers = true;
  AEvent event(AEvent::AutoReset);
  const std::time_t before = std::time(nullptr);
  EXPECT_EQ(event.Wait(9, AsTheMonitor), AEvent::TimedOut);
  EXPECT_EQ(event.Wait(1000, AsTheMonitor), AEvent::TimedOut);
  EXPECT_GE(std::time(nullptr), before + 1);
  std::thread setter([&] { (void)event.Set(); });
  EXPECT_EQ(event.Wait(3600000, AsTheMonitor), AEvent::WasSet);
  setter.join();
  EXPECT_TRUE(machine.m_Timers.empty());
}

TEST(AEvent, ConstructionReportsThatNoDescriptorIsLeft) {
  SystemClockDouble machine;
  machine.m_NoEvents = true;
  EXPECT_THROW(std::make_unique<AEvent>(AEvent::AutoReset), std::system_error);
}

}  // namespace
}  // namespace BaseSDK
