#include "scheduler/TSThread.h"

#include "tests/scheduler/SchedulerInside.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RawSlots.h"

#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <utility>

namespace {

using BaseSDK::AEvent;
using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;
using VirtualTime::VirtualClock;

constexpr unsigned long LongMilliseconds = 1000000;

class BodyThread : public CTSThread {
 public:
  explicit BodyThread(std::function<void(BodyThread&)> body)
      : CTSThread(nullptr, L"worker"), m_Body(std::move(body)) {}
  ~BodyThread() override {
    m_Release.Set();
    EXPECT_TRUE(Shutdown());
  }

  void Run() override { m_Body(*this); }

  bool IsStopRequested() const { return m_Stop; }
  int Sleep() { return m_WakeEvent.Wait(LongMilliseconds, BaseSDK::ClockSkewIgnore); }

  AEvent m_Release{AEvent::ManualReset};
  std::atomic<int> m_WakeUps = 0;

 private:
  std::function<void(BodyThread&)> m_Body;
};

class TSThreadTest : public ::testing::Test {
 protected:
  static constexpr long Begin = 1109664000;

  TSThreadTest() { Clock().Start(Begin); }

  static VirtualClock& Clock() { return VirtualClock::Instance(); }
  static std::int64_t Passed() { return Clock().NowMilliseconds() - Begin * std::int64_t{1000}; }

  LogCapture m_Log;
};

TEST_F(TSThreadTest, ShutdownOfAThreadThatNeverStartedIsTrueAtOnce) {
  BodyThread thread([](BodyThread&) {});
  EXPECT_TRUE(thread.Shutdown());
  EXPECT_EQ(0, Passed());
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(TSThreadTest, ShutdownWakesAThreadThatSleeps) {
  BodyThread thread([](BodyThread& self) {
    while (!self.IsStopRequested()) {
      EXPECT_EQ(AEvent::WasSet, self.Sleep());
    }
  });
  ASSERT_TRUE(thread.Start());
  Clock().Settle();
  EXPECT_TRUE(thread.Shutdown());
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_LE(Passed(), 100);
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(TSThreadTest, ShutdownOfAThreadThatEndsAfter250MillisecondsTakesThreeWakeUps) {
  BodyThread thread([](BodyThread&) { Clock().Sleep(250); });
  ASSERT_TRUE(thread.Start());
  Clock().Settle();
  EXPECT_TRUE(thread.Shutdown());
  EXPECT_EQ(300, Passed()) << "three pauses of 100 ms";
}

TEST_F(TSThreadTest, ShutdownGivesUpAfterThirtyWakeUpsAndLeavesTheThreadRunning) {
  BodyThread thread([](BodyThread& self) {
    while (self.m_WakeUps < 30) {
      self.Sleep();
      ++self.m_WakeUps;
    }
    self.m_Release.Wait(LongMilliseconds, BaseSDK::ClockSkewIgnore);
  });
  ASSERT_TRUE(thread.Start());
  Clock().Settle();
  EXPECT_FALSE(thread.Shutdown());
  EXPECT_EQ(3000, Passed());
  EXPECT_EQ(30, thread.m_WakeUps);
  EXPECT_TRUE(thread.IsRunning());
  ASSERT_EQ(1U, m_Log.Lines().size());
  const LogCapture::Line line = m_Log.Lines()[0];
  EXPECT_EQ(ALogger::Information, line.m_Level);
  EXPECT_EQ(AString(L"Failed to stop the thread with Param = \"worker\""), line.m_Message);
  EXPECT_EQ("Corvane::Agent::TaskScheduler", line.m_Channel);
  EXPECT_EQ("TaskSchedulerObject", line.m_Source);
}

TEST_F(TSThreadTest, ShutdownThatFailedMaySucceedLater) {
  BodyThread thread(
      [](BodyThread& self) { self.m_Release.Wait(LongMilliseconds, BaseSDK::ClockSkewIgnore); });
  ASSERT_TRUE(thread.Start());
  EXPECT_FALSE(thread.Shutdown());
  thread.m_Release.Set();
  EXPECT_TRUE(thread.Shutdown());
}

/// Keeps to its base: it has nothing of its own that could be gone.
class PlainThread : public CTSThread {
 public:
  PlainThread() : CTSThread(nullptr, L"plain") {}
  void Run() override {
    while (!m_Stop) {
      (void)m_WakeEvent.Wait(LongMilliseconds, BaseSDK::ClockSkewIgnore);
    }
  }
};

TEST_F(TSThreadTest, DestructionShutsDown) {
  {
    PlainThread thread;
    ASSERT_TRUE(thread.Start());
    Clock().Settle();
  }
  EXPECT_EQ(0U, Clock().ParkedThreads()) << "it has ended";
  EXPECT_LE(Passed(), 100);
  EXPECT_TRUE(m_Log.Lines().empty());
}

TEST_F(TSThreadTest, TheStopRequestStandsForGood) {
  BodyThread thread([](BodyThread&) {});
  EXPECT_FALSE(thread.IsStopRequested());
  EXPECT_TRUE(thread.Shutdown());
  EXPECT_TRUE(thread.IsStopRequested());
}

TEST_F(TSThreadTest, RouseRaisesTheFlagAndWakes) {
  BodyThread thread([](BodyThread& self) { EXPECT_EQ(AEvent::WasSet, self.Sleep()); });
  EXPECT_FALSE(THREAD_INSIDE(thread, m_Refresh));
  ASSERT_TRUE(thread.Start());
  Clock().Settle();
  thread.Rouse();
  Clock().Settle();
  EXPECT_TRUE(THREAD_INSIDE(thread, m_Refresh));
  EXPECT_FALSE(thread.IsRunning());
}

TEST_F(TSThreadTest, WakeSetsTheEventOnly) {
  BodyThread thread([](BodyThread& self) { EXPECT_EQ(AEvent::WasSet, self.Sleep()); });
  ASSERT_TRUE(thread.Start());
  EXPECT_EQ(1, thread.Wake());
  Clock().Settle();
  EXPECT_FALSE(THREAD_INSIDE(thread, m_Refresh));
  EXPECT_FALSE(thread.IsRunning());
}

TEST_F(TSThreadTest, AWakeUpIsConsumedByTheWaitThatItEnds) {
  BodyThread thread([](BodyThread& self) {
    while (!self.IsStopRequested()) {
      self.Sleep();
      ++self.m_WakeUps;
    }
  });
  ASSERT_TRUE(thread.Start());
  Clock().Settle();
  thread.Rouse();
  Clock().Settle();
  EXPECT_EQ(1, thread.m_WakeUps);
}

TEST_F(TSThreadTest, HasItsMembersInOrder) {
  BodyThread thread([](BodyThread&) {});
  const void* const members[] = {&THREAD_INSIDE(thread, m_Stop), &THREAD_INSIDE(thread, m_Refresh),
                                 &THREAD_INSIDE(thread, m_WakeEvent),
                                 &THREAD_INSIDE(thread, m_pScheduler),
                                 &THREAD_INSIDE(thread, m_Param)};
  const void* before = &thread;
  for (const void* member : members) {
    EXPECT_LT(before, member);
    before = member;
  }
  EXPECT_EQ(AString(L"worker"), THREAD_INSIDE(thread, m_Param));
  EXPECT_EQ(nullptr, THREAD_INSIDE(thread, m_pScheduler));
}

TEST(TSThread, RunsThroughItsThirdSlot) {
  // Slots 0 and 1 are the destructor, complete and deleting.
  EXPECT_EQ(2, TestSupport::SlotOf(&CTSThread::Run));
  EXPECT_EQ(2, TestSupport::SlotOf(&CMonitorThread::Run));
  EXPECT_EQ(sizeof(CTSThread), sizeof(CMonitorThread)) << "the monitor has no data of its own";
}

}  // namespace
