#include "tests/support/Texts.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AThread.h>
#include <BaseSDK/ThreadHooks.h>

#include <gtest/gtest.h>

#include <pthread.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

/// What the hooks, defined again below, were called for.
class HookLog {
 public:
  void Add(const char* hook) {
    const BaseSDK::AMutexGuard guard(m_Lock);
    m_Calls.push_back({hook, std::this_thread::get_id()});
  }
  std::vector<std::string> TakeNames() {
    const BaseSDK::AMutexGuard guard(m_Lock);
    std::vector<std::string> names;
    for (const Call& call : m_Calls) {
      names.push_back(call.m_Hook + (call.m_Thread == m_Main ? " here" : " there"));
    }
    m_Calls.clear();
    return names;
  }

 private:
  struct Call {
    std::string m_Hook;
    std::thread::id m_Thread;
  };
  const std::thread::id m_Main = std::this_thread::get_id();
  BaseSDK::AMutex m_Lock;
  std::vector<Call> m_Calls NOX_GUARDED_BY(m_Lock);
};

HookLog g_Hooks;

}  // namespace

namespace BaseSDK {

namespace Platform {

void OnThreadStart() {
  g_Hooks.Add("start");
}
void OnThreadEnter() {
  g_Hooks.Add("enter");
}
void OnThreadEnd() {
  g_Hooks.Add("end");
}

}  // namespace Platform

namespace {

using TestSupport::Texts;

/// Shared by a test and a thread that may outlive its object.
struct Gate {
  AEvent m_Entered{AEvent::AutoReset};
  AEvent m_Leave{AEvent::AutoReset};
  AEvent m_Left{AEvent::AutoReset};
};

class GatedThread : public AThread {
 public:
  explicit GatedThread(std::shared_ptr<Gate> gate) : m_Gate(std::move(gate)) {}

  void Run() override {
    const std::shared_ptr<Gate> gate = m_Gate;
    (void)gate->m_Entered.Set();
    (void)gate->m_Leave.Wait(60000, ClockSkewIgnore);
    (void)gate->m_Left.Set();
  }

 private:
  const std::shared_ptr<Gate> m_Gate;
};

class AThreadTest : public testing::Test {
 protected:
  void SetUp() override { (void)g_Hooks.TakeNames(); }

  static bool Reached(AEvent& event) {
    return event.Wait(60000, ClockSkewIgnore) == AEvent::WasSet;
  }
  static void AwaitEnd(const AThread& thread) {
    while (thread.IsRunning()) {
      std::this_thread::yield();
    }
  }

  std::shared_ptr<Gate> m_Gate = std::make_shared<Gate>();
};

TEST_F(AThreadTest, RunsFromStartUntilRunReturns) {
  GatedThread thread(m_Gate);
  EXPECT_FALSE(thread.IsRunning());
  ASSERT_TRUE(thread.Start());
  EXPECT_TRUE(thread.IsRunning());
  ASSERT_TRUE(Reached(m_Gate->m_Entered));
  EXPECT_TRUE(thread.IsRunning());
  EXPECT_FALSE(thread.Start()) << "it runs already";
  (void)m_Gate->m_Leave.Set();
  AwaitEnd(thread);
}

TEST_F(AThreadTest, StartsAgainAfterItsEnd) {
  GatedThread thread(m_Gate);
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(thread.Start());
    ASSERT_TRUE(Reached(m_Gate->m_Entered));
    (void)m_Gate->m_Leave.Set();
    AwaitEnd(thread);
  }
}

TEST_F(AThreadTest, HooksTellOfItsBeginningAndEnd) {
  {
    GatedThread thread(m_Gate);
    EXPECT_TRUE(g_Hooks.TakeNames().empty());
    ASSERT_TRUE(thread.Start());
    (void)m_Gate->m_Leave.Set();
    AwaitEnd(thread);
  }
  EXPECT_EQ(g_Hooks.TakeNames(), (Texts{"start here", "enter there", "end there"}));
}

TEST_F(AThreadTest, DestructionLeavesARunningThreadRunning) {
  {
    GatedThread thread(m_Gate);
    ASSERT_TRUE(thread.Start());
    ASSERT_TRUE(Reached(m_Gate->m_Entered));
  }
  (void)m_Gate->m_Leave.Set();
  EXPECT_TRUE(Reached(m_Gate->m_Left));
  // The thread is done for later tests only once it has said so.
  std::vector<std::string> names;
  while (names.empty() || names.back() != "end there") {
    std::this_thread::yield();
    std::ranges::copy(g_Hooks.TakeNames(), std::back_inserter(names));
  }
}

TEST_F(AThreadTest, DestructionOfAThreadThatNeverStartedIsQuiet) {
  { const GatedThread thread(m_Gate); }
  EXPECT_TRUE(g_Hooks.TakeNames().empty());
}

TEST_F(AThreadTest, StartReportsThatTheSystemHasNoThreadToGive) {
  pthread_attr_t before;
  pthread_attr_t tooLarge;
  ASSERT_EQ(pthread_getattr_default_np(&before), 0);
  ASSERT_EQ(pthread_attr_init(&tooLarge), 0);
  // More stack than the address space has.
  const std::size_t most = static_cast<std::size_t>(-1) - (16u << 20);
  ASSERT_EQ(pthread_attr_setstacksize(&tooLarge, most - most % 65536), 0);
  GatedThread thread(m_Gate);
  ASSERT_EQ(pthread_setattr_default_np(&tooLarge), 0);
  EXPECT_FALSE(thread.Start());
  ASSERT_EQ(pthread_setattr_default_np(&before), 0);
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(g_Hooks.TakeNames(), (Texts{"start here", "end here"}));
  (void)pthread_attr_destroy(&tooLarge);
  (void)pthread_attr_destroy(&before);

  (void)m_Gate->m_Leave.Set();
  EXPECT_TRUE(thread.Start()) << "there are threads again";
  AwaitEnd(thread);
}

TEST(AMutex, LetsOneThreadInAtATime) {
  AMutex mutex;
  int count = 0;
  const auto work = [&] {
    for (int i = 0; i < 10000; ++i) {
      const AMutexGuard guard(mutex);
      ++count;
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 20000);
}

TEST(AMutex, GuardReleasesOnEveryPath) {
  AMutex mutex;
  try {
    const AMutexGuard guard(mutex);
    throw 1;
  } catch (int) {
  }
  ASSERT_TRUE(mutex.TryLock());
  std::thread([&mutex] {
    const bool taken = mutex.TryLock();
    EXPECT_FALSE(taken) << "another thread holds it";
    if (taken) {
      mutex.Unlock();
    }
  }).join();
  mutex.Unlock();
}

}  // namespace
}  // namespace BaseSDK
