#include "tests/support/BodyThread.h"

#include <BaseSDK/AEvent.h>
#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

namespace {

using BaseSDK::AClockSkewBehavior;
using BaseSDK::AEvent;
using BaseSDK::ClockSkewAlignToSecond;
using BaseSDK::ClockSkewEndOnResume;
using BaseSDK::ClockSkewEndOnSet;
using BaseSDK::ClockSkewIgnore;
using BaseSDK::ClockSkewNeverEarly;
using TestSupport::BodyThread;
using VirtualTime::VirtualClock;

constexpr auto AllBehaviors = static_cast<AClockSkewBehavior>(15);

class VirtualEvent : public testing::Test {
 protected:
  static constexpr long Begin = 1109664000;

  VirtualEvent() { m_Clock.Start(Begin); }

  /// A thread's one wait: what it returned and when, in milliseconds after Begin.
  struct Outcome {
    int m_Result;
    std::int64_t m_At;
    bool operator==(const Outcome&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
      return out << "result " << outcome.m_Result << " at " << outcome.m_At << " ms";
    }
  };

  std::int64_t SinceBegin() const { return m_Clock.NowMilliseconds() - std::int64_t{Begin} * 1000; }

  /// What becomes of a wait that another thread begins now, while `meanwhile` goes on here.
  Outcome Wait(unsigned long milliseconds, AClockSkewBehavior behavior,
               const std::function<void()>& meanwhile) {
    Outcome outcome{-1, -1};
    BodyThread thread([&] {
      const int result = m_Event.Wait(milliseconds, behavior);
      outcome = {result, SinceBegin()};
    });
    m_Clock.Settle();
    meanwhile();
    thread.Join();
    return outcome;
  }

  VirtualClock& m_Clock = VirtualClock::Instance();
  AEvent m_Event{AEvent::AutoReset};
};

TEST_F(VirtualEvent, WaitEndsAtItsDeadlineAndNotBefore) {
  EXPECT_EQ(Wait(5000, ClockSkewIgnore,
                 [&] {
                   m_Clock.RunFor(4999);
                   EXPECT_EQ(m_Clock.ParkedThreads(), 1U);
                   m_Clock.RunFor(1);
                 }),
            (Outcome{AEvent::TimedOut, 5000}));
}

TEST_F(VirtualEvent, SetEndsTheWaitAtTheMomentOfTheCall) {
  EXPECT_EQ(Wait(5000, AllBehaviors,
                 [&] {
                   m_Clock.RunFor(1234);
                   EXPECT_EQ(m_Event.Set(), 1);
                   // Unless the thread counts as awake from Set on, time runs away before it wakes.
                   m_Clock.RunFor(1000000);
                 }),
            (Outcome{AEvent::WasSet, 1234}));
}

TEST_F(VirtualEvent, ManyWakeUpsBySetNeverLetTimeRunAway) {
  std::int64_t worst = 0;
  BodyThread thread([&] {
    for (int i = 0; i < 2000; ++i) {
      const std::int64_t expected = SinceBegin() / 10000 * 10000 + 10000;
      (void)m_Event.Wait(3600000, AllBehaviors);
      worst = std::max(worst, SinceBegin() - expected);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    m_Clock.RunFor(10000);
    (void)m_Event.Set();
  }
  thread.Join();
  EXPECT_EQ(worst, 0);
}

TEST_F(VirtualEvent, AutoResetIsConsumedByOneWait) {
  (void)m_Event.Set();
  EXPECT_EQ(m_Event.Wait(0, ClockSkewIgnore), AEvent::WasSet);
  EXPECT_EQ(m_Event.Wait(0, ClockSkewIgnore), AEvent::TimedOut);
  (void)m_Event.Set();
  EXPECT_EQ(m_Event.Reset(), 1);
  EXPECT_EQ(m_Event.Reset(), 0);
  EXPECT_EQ(m_Event.Wait(0, ClockSkewIgnore), AEvent::TimedOut);
}

TEST_F(VirtualEvent, AutoResetSetWakesOneOfTwo) {
  int woken = 0;
  const auto body = [&] { woken += m_Event.Wait(1000, ClockSkewIgnore); };
  {
    BodyThread first(body);
    m_Clock.Settle();
    BodyThread second(body);
    m_Clock.Settle();
    (void)m_Event.Set();
    m_Clock.RunFor(1000);
  }
  EXPECT_EQ(woken, 1);
  EXPECT_EQ(m_Event.Wait(0, ClockSkewIgnore), AEvent::TimedOut);
}

TEST_F(VirtualEvent, ManualResetStaysSetAndWakesAll) {
  AEvent event(AEvent::ManualReset);
  std::atomic<int> woken{0};
  const auto body = [&] { woken += event.Wait(1000, ClockSkewIgnore); };
  {
    BodyThread first(body);
    BodyThread second(body);
    m_Clock.Settle();
    (void)event.Set();
  }
  EXPECT_EQ(woken, 2);
  EXPECT_EQ(event.Wait(1000, ClockSkewIgnore), AEvent::WasSet);
  EXPECT_EQ(event.Reset(), 1);
  EXPECT_EQ(event.Wait(0, ClockSkewIgnore), AEvent::TimedOut);
}

TEST_F(VirtualEvent, EmptyWaitOfTheControllerOnlyLooks) {
  EXPECT_EQ(m_Event.Wait(0, AllBehaviors), AEvent::TimedOut);
  EXPECT_EQ(SinceBegin(), 0);
}

TEST_F(VirtualEvent, LoopOfEmptyWaitsTakesTimeInsteadOfHoldingItForGood) {
  std::int64_t turns = 0;
  BodyThread thread([&] {
    while (SinceBegin() < 1000) {
      (void)m_Event.Wait(0, AllBehaviors);
      ++turns;
    }
  });
  m_Clock.RunUntil(Begin + 1);
  thread.Join();
  EXPECT_EQ(turns, 1000);
}

TEST_F(VirtualEvent, ControllersOwnWaitMovesTheClock) {
  EXPECT_EQ(m_Event.Wait(2500, ClockSkewIgnore), AEvent::TimedOut);
  EXPECT_EQ(SinceBegin(), 2500);
}

TEST_F(VirtualEvent, ControllersOwnWaitIsEndedByAnotherThread) {
  BodyThread thread([&] {
    m_Clock.Sleep(700);
    (void)m_Event.Set();
  });
  EXPECT_EQ(m_Event.Wait(2500, ClockSkewIgnore), AEvent::WasSet);
  EXPECT_EQ(SinceBegin(), 700);
}

struct AlignCase {
  unsigned long m_Milliseconds;
  AClockSkewBehavior m_Behavior;
  std::int64_t m_EndsAt;
};

class VirtualEventAlign : public VirtualEvent, public testing::WithParamInterface<AlignCase> {};

TEST_P(VirtualEventAlign, WaitBegunWithinASecond) {
  m_Clock.RunFor(300);
  const AlignCase& row = GetParam();
  EXPECT_EQ(Wait(row.m_Milliseconds, row.m_Behavior, [&] { m_Clock.RunFor(60000); }),
            (Outcome{AEvent::TimedOut, row.m_EndsAt}))
      << row.m_Milliseconds << " ms, behaviour " << row.m_Behavior;
}

const AlignCase AlignCases[] = {{2000, ClockSkewIgnore, 2300},
                                {2000, AllBehaviors, 2000},
                                {2000, ClockSkewAlignToSecond, 2000},
                                {2000, ClockSkewNeverEarly, 2300},
                                {2000, ClockSkewEndOnSet, 2300},
                                {2500, AllBehaviors, 2800}};  // only whole seconds are aligned

INSTANTIATE_TEST_SUITE_P(Rows, VirtualEventAlign, testing::ValuesIn(AlignCases));

struct StepCase {
  const char* m_Name;
  AClockSkewBehavior m_Behavior;
  long m_StepSeconds;
  int m_Result;
  std::int64_t m_EndsAt;  ///< by the wall clock
};

/// Each waits for 10 s and has the clock changed after 4 of them.
class VirtualEventStep : public VirtualEvent, public testing::WithParamInterface<StepCase> {
 protected:
  void Check(const std::function<void(long)>& change) {
    const StepCase& row = GetParam();
    EXPECT_EQ(Wait(10000, row.m_Behavior,
                   [&] {
                     m_Clock.RunFor(4000);
                     change(row.m_StepSeconds);
                     m_Clock.RunFor(100000);
                   }),
              (Outcome{row.m_Result, row.m_EndsAt}))
        << row.m_Name;
  }
};

TEST_P(VirtualEventStep, WaitUnderWayWhenTheClockIsSet) {
  Check([&](long seconds) { m_Clock.StepWallClock(seconds); });
}

TEST_P(VirtualEventStep, WaitUnderWayWhenTheMachineSleeps) {
  Check([&](long seconds) { m_Clock.Suspend(seconds); });
}

const StepCase StepCases[] = {
    {"plain, forward", ClockSkewIgnore, 3600, AEvent::TimedOut, 3610000},
    {"plain, back", ClockSkewIgnore, -3600, AEvent::TimedOut, -3590000},
    {"on the wall clock, forward past it", ClockSkewNeverEarly, 3600, AEvent::TimedOut, 3604000},
    {"on the wall clock, forward before it", ClockSkewNeverEarly, 3, AEvent::TimedOut, 10000},
    {"on the wall clock, back", ClockSkewAlignToSecond, -30, AEvent::TimedOut, 10000},
    {"asking for the end on set", ClockSkewEndOnSet, 3600, AEvent::ClockChanged, 3604000},
    {"asking for the end on resume", ClockSkewEndOnResume, 60, AEvent::ClockChanged, 64000},
    {"as the monitor waits, forward", AllBehaviors, 3600, AEvent::ClockChanged, 3604000},
    {"as the monitor waits, back", AllBehaviors, -3600, AEvent::ClockChanged, -3596000}};

INSTANTIATE_TEST_SUITE_P(Rows, VirtualEventStep, testing::ValuesIn(StepCases));

TEST_F(VirtualEvent, SetWinsOverAChangeOfTheClockAtTheSameMoment) {
  const auto holdTime = [&] {
    m_Clock.StepWallClock(60);  // wakes nobody yet: this call runs while a thread is awake
    (void)m_Event.Set();
  };
  Outcome outcome{-1, -1};
  BodyThread waiter([&] {
    const int result = m_Event.Wait(10000, AllBehaviors);
    outcome = {result, SinceBegin()};
  });
  m_Clock.Settle();
  BodyThread changer(holdTime);
  changer.Join();
  waiter.Join();
  EXPECT_EQ(outcome, (Outcome{AEvent::WasSet, 60000}));
}

}  // namespace
