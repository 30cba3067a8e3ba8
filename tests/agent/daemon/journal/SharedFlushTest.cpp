#include "agent/daemon/journal/SharedFlush.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

namespace NoxAgent {
namespace {

TEST(SharedFlush, FlushesNothingWithoutAChange) {
  SharedFlush shared;
  shared.Share([] { ADD_FAILURE(); });
}

TEST(SharedFlush, FlushesOnceForAllThatWasCounted) {
  SharedFlush shared;
  unsigned flushes = 0;
  shared.Count();
  shared.Count();
  shared.Share([&] { ++flushes; });
  shared.Share([&] { ++flushes; });
  EXPECT_EQ(flushes, 1U);
}

TEST(SharedFlush, FlushesAgainForAChangeThatComesDuringAFlush) {
  SharedFlush shared;
  unsigned flushes = 0;
  shared.Count();
  shared.Share([&] {
    ++flushes;
    shared.Count();
  });
  EXPECT_EQ(flushes, 1U) << "it came after the call";
  shared.Share([&] { ++flushes; });
  EXPECT_EQ(flushes, 2U);
}

TEST(SharedFlush, AllThatComeDuringASlowFlushShareTheNext) {
  constexpr int Threads = 16;
  SharedFlush shared;
  std::atomic<unsigned> flushes = 0;
  std::latch isFlushing(1);
  std::latch areCounted(Threads);
  shared.Count();
  std::thread slow([&] {
    shared.Share([&] {
      isFlushing.count_down();
      areCounted.wait();
      ++flushes;
    });
  });
  isFlushing.wait();
  std::vector<std::thread> others;
  for (int i = 0; i < Threads; ++i) {
    others.emplace_back([&] {
      shared.Count();
      areCounted.count_down();
      shared.Share([&] { ++flushes; });
      EXPECT_EQ(flushes, 2U);
    });
  }
  slow.join();
  for (std::thread& other : others) {
    other.join();
  }
  EXPECT_EQ(flushes, 2U);
}

TEST(SharedFlush, NobodyReturnsBeforeAFlushThatBeganAfterHisChange) {
  constexpr int Threads = 4;
  constexpr int Rounds = 500;
  SharedFlush shared;
  std::atomic<int> changes[Threads] = {};
  std::atomic<int> flushed[Threads] = {};
  std::atomic<bool> isFlushing = false;
  const auto flush = [&] {
    EXPECT_FALSE(isFlushing.exchange(true)) << "one thread at a time";
    int seen[Threads];
    std::copy(std::begin(changes), std::end(changes), std::begin(seen));
    std::this_thread::yield();
    std::copy(std::begin(seen), std::end(seen), std::begin(flushed));
    isFlushing = false;
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < Threads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int round = 1; round <= Rounds; ++round) {
        changes[thread] = round;
        shared.Count();
        shared.Share(flush);
        ASSERT_GE(flushed[thread], round);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace NoxAgent
