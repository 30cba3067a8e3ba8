// Who holds the time, who does not, and in which order threads wake.
#include "tests/support/BodyThread.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>
#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using BaseSDK::AEvent;
using TestSupport::BodyThread;
using VirtualTime::VirtualClock;

class Participants : public testing::Test {
 protected:
  static constexpr long Begin = 1109664000;

  Participants() { m_Clock.Start(Begin); }
  VirtualClock& m_Clock = VirtualClock::Instance();
};

TEST_F(Participants, ThreadCountsFromItsStartOn) {
  for (int i = 0; i < 200; ++i) {
    const long before = m_Clock.Now();
    long seen = 0;
    BodyThread thread([&] { seen = m_Clock.Now(); });
    m_Clock.RunFor(3600000);  // must not move before the new thread has had its turn
    thread.Join();
    ASSERT_EQ(seen, before);
  }
}

TEST_F(Participants, ThreadThatEndsWhileTheControllerWaitsHoldsTheTimeNoLonger) {
  BodyThread thread([&] { m_Clock.Sleep(250); });
  m_Clock.RunFor(1000);
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(m_Clock.NowMilliseconds(), std::int64_t{Begin} * 1000 + 1000);
  EXPECT_EQ(m_Clock.ParkedThreads(), 0U);
}

TEST_F(Participants, ThreadThatCannotBeJoinedYetIsSeenToEndAfterThreeNaps) {
  BodyThread thread([&] { m_Clock.Sleep(250); });
  int naps = 0;
  while (thread.IsRunning()) {
    m_Clock.Sleep(100);
    ++naps;
  }
  EXPECT_EQ(naps, 3);
}

TEST_F(Participants, ThreadBlockedOnAMutexHoldsTheTime) {
  BaseSDK::AMutex mutex;
  std::int64_t lockedAt = -1;
  BodyThread holder([&] {
    const BaseSDK::AMutexGuard guard(mutex);
    BodyThread blocked([&] {
      const BaseSDK::AMutexGuard second(mutex);
      lockedAt = m_Clock.NowMilliseconds();
    });
    // The other thread is not parked while it waits for the lock, so these come at their time.
    std::this_thread::yield();
    EXPECT_EQ(m_Clock.Now(), Begin);
    (void)blocked.IsRunning();
    mutex.Unlock();
    blocked.Join();
    mutex.Lock();
  });
  m_Clock.RunFor(3600000);
  EXPECT_EQ(lockedAt, std::int64_t{Begin} * 1000);
}

TEST_F(Participants, ForeignThreadTakesPartInsideItsWaitOnly) {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  std::int64_t wokenAt = -1;
  std::thread foreign([&] {
    m_Clock.Sleep(500);
    wokenAt = m_Clock.NowMilliseconds();
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return done; });  // out of its wait: the clock does not mind it
  });
  while (m_Clock.ParkedThreads() == 0) {
    std::this_thread::yield();
  }
  m_Clock.RunFor(500);
  m_Clock.RunFor(3600000);
  {
    const std::lock_guard lock(mutex);
    done = true;
  }
  changed.notify_all();
  foreign.join();
  EXPECT_GE(wokenAt, std::int64_t{Begin} * 1000 + 500);
  EXPECT_EQ(m_Clock.NowMilliseconds(), std::int64_t{Begin} * 1000 + 3600500);
}

/// Threads that wake at the same instant, again and again, and say so.
std::string OrderOfWaking(VirtualClock& clock) {
  std::string order;  // no lock: one thread at a time is awake, or the sanitizers tell
  std::vector<std::unique_ptr<BodyThread>> threads;
  for (const char name : {'a', 'b', 'c', 'd'}) {
    threads.push_back(std::make_unique<BodyThread>([&clock, &order, name] {
      for (int i = 0; i < 3; ++i) {
        clock.Sleep(1000);
        order += name;
      }
    }));
    clock.Settle();
  }
  clock.RunFor(3000);
  return order;
}

TEST_F(Participants, EqualDeadlinesWakeInTheOrderOfTheirWaitsOneByOne) {
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(OrderOfWaking(m_Clock), "abcdabcdabcd");
  }
}

TEST_F(Participants, WaitsEndedByAChangeOfTheClockWakeInTheirOrderOneByOne) {
  for (int i = 0; i < 50; ++i) {
    std::string order;
    AEvent event(AEvent::AutoReset);
    std::vector<std::unique_ptr<BodyThread>> threads;
    unsigned long milliseconds = 9000;  // the later the thread, the earlier its deadline
    for (const char name : {'a', 'b', 'c', 'd'}) {
      threads.push_back(std::make_unique<BodyThread>([&event, &order, name, milliseconds] {
        (void)event.Wait(milliseconds, BaseSDK::ClockSkewEndOnSet);
        order += name;
      }));
      m_Clock.Settle();
      milliseconds -= 1000;
    }
    m_Clock.StepWallClock(1);
    m_Clock.Settle();
    ASSERT_EQ(order, "abcd");
  }
}

TEST_F(Participants, ParkedThreadsAndTheNextDeadlineCanBeAsked) {
  EXPECT_EQ(m_Clock.NextDeadline(), std::nullopt);
  BodyThread later([&] { m_Clock.Sleep(7200000); });
  BodyThread sooner([&] {
    AEvent event(AEvent::AutoReset);
    (void)event.Wait(3600000, static_cast<BaseSDK::AClockSkewBehavior>(15));
  });
  m_Clock.Settle();
  EXPECT_EQ(m_Clock.ParkedThreads(), 2U);
  EXPECT_EQ(m_Clock.NextDeadline(), Begin + 3600);
  m_Clock.RunUntil(Begin + 3600);
  EXPECT_EQ(m_Clock.NextDeadline(), Begin + 7200);
  m_Clock.RunUntil(Begin + 7200);
  EXPECT_EQ(m_Clock.NextDeadline(), std::nullopt);
}

}  // namespace
