#include <BaseSDK/AEvent.h>
#include <BaseSDK/AThread.h>
#include <BaseSDK/AThreadRest.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace BaseSDK {
namespace {

constexpr unsigned long LongMilliseconds = 60000;

class BodyThread : public AThread {
 public:
  explicit BodyThread(std::function<void()> body) : m_Body(std::move(body)) {}
  void Run() override { m_Body(); }

 private:
  const std::function<void()> m_Body;
};

/// Not an event: waiting for one would be rest, and this stands for work.
class Door {
 public:
  void Open() {
    {
      const std::lock_guard<std::mutex> lock(m_Lock);
      m_Open = true;
    }
    m_Changed.notify_all();
  }
  void Pass() {
    std::unique_lock<std::mutex> lock(m_Lock);
    m_Changed.wait(lock, [this] { return m_Open; });
  }

 private:
  std::mutex m_Lock;
  std::condition_variable m_Changed;
  bool m_Open = false;
};

TEST(AThreadRest, AThreadIsAtWorkFromItsStartToItsEnd) {
  ASSERT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
  Door door;
  BodyThread thread([&door] { door.Pass(); });
  ASSERT_TRUE(thread.Start());
  EXPECT_FALSE(AThreadRest::WaitForAll(0));
  EXPECT_FALSE(AThreadRest::WaitForAll(1));
  door.Open();
  EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
  EXPECT_FALSE(thread.IsRunning());
}

TEST(AThreadRest, AThreadThatWaitsForAnEventIsAtRest) {
  for (const AClockSkewBehavior behavior : {ClockSkewIgnore, ClockSkewEndOnSet}) {
    AEvent wake(AEvent::AutoReset);
    Door door;
    std::atomic<bool> atWork = true;
    BodyThread thread([&] {
      atWork = false;
      (void)wake.Wait(LongMilliseconds, behavior);
      atWork = true;
      door.Pass();
    });
    ASSERT_TRUE(thread.Start());
    EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_FALSE(atWork);
    (void)wake.Set();
    while (!atWork) {
      std::this_thread::yield();
    }
    EXPECT_FALSE(AThreadRest::WaitForAll(1)) << behavior;
    door.Open();
    EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
  }
}

TEST(AThreadRest, AThreadSaysSoWhenItWaitsInAnotherWay) {
  Door first;
  Door second;
  std::atomic<bool> isBack = false;
  BodyThread thread([&] {
    {
      const AThreadRest rest;
      const AThreadRest restWithin;
      first.Pass();
    }
    isBack = true;
    second.Pass();
  });
  ASSERT_TRUE(thread.Start());
  EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
  EXPECT_TRUE(thread.IsRunning());
  first.Open();
  while (!isBack) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(AThreadRest::WaitForAll(0));
  second.Open();
  EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
}

TEST(AThreadRest, ThreadsOfAnotherKindDoNotCount) {
  Door door;
  std::thread other([&door] {
    AEvent never(AEvent::AutoReset);
    (void)never.Wait(1, ClockSkewIgnore);
    const AThreadRest rest;
    door.Pass();
  });
  EXPECT_TRUE(AThreadRest::WaitForAll(LongMilliseconds));
  door.Open();
  other.join();
  EXPECT_TRUE(AThreadRest::WaitForAll(0));
}

}  // namespace
}  // namespace BaseSDK
