// Runs that somebody ends by hand, and what is left out with them.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

using States = std::vector<std::string>;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::chrono_literals;

namespace NoxHandlerTest {

namespace {

class StopRun : public SupervisorFixture {
 protected:
  bool Stop(const std::string& name) {
    return m_Supervisor->StopRun(BaseSDK::AString(name.c_str()));
  }
  // The supervisor takes this up in one turn: it is asked while it tells of another run.
  void AskInOneTurn(const std::function<void()>& ask) {
    AddJob("other", "true");
    m_Scheduler.OnState([&] {
      if (!std::exchange(m_HasAsked, true)) {
        ask();
      }
    });
    Dispatch("other", false);
    EXPECT_THAT(m_Scheduler.WaitForStates(1), Contains("other Ok"));
    m_Scheduler.OnState(nullptr);
  }
  bool WaitUntilNothingGoesOn() {
    return WaitUntil([&] { return !m_Supervisor->IsBusy(); });
  }

 private:
  bool m_HasAsked = false;
};

}  // namespace

TEST_F(StopRun, EndsTheRunThatGoesOn) {
  AddGatedJob("a");
  StartSupervisor();
  Dispatch("a", false);
  const std::string pid = Started();
  ASSERT_TRUE(WaitUntilTold("a", "state", "running"));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_THAT(Told("a")["reason"], MatchesRegex("ended by request after [0-9]+\\.[0-9]{3} s"));
  EXPECT_THAT(Output("a"), HasSubstr(" ended by request after "));
}

TEST_F(StopRun, KillsARunThatDoesNotEnd) {
  AddJob("a", "trap '' TERM; echo $$ > $STARTED; read line < $GATE");
  StartSupervisor(1ms);
  Dispatch("a", false);
  const std::string pid = Started();
  ASSERT_TRUE(WaitUntilTold("a", "state", "running"));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_THAT(Told("a")["reason"], HasSubstr("ended by request"));
}

TEST_F(StopRun, LetsNoAttemptFollow) {
  AddGatedJob("a", "retry = 3 every 5m");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  ASSERT_TRUE(WaitUntilTold("a", "state", "running"));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"}) << "to the scheduler it is over";
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_TRUE(WaitUntilNothingGoesOn());
}

TEST_F(StopRun, EndsARunBetweenTwoAttempts) {
  AddJob("a", "exit 7", "retry = 3 every 5m");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("reason"); }));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_THAT(Told("a")["reason"],
              MatchesRegex("exit status 7 after [0-9.]+ s, attempt 1 of 4; not tried again: it was "
                           "ended by request"));
  EXPECT_THAT(Output("a"), EndsWith(" not tried again: it was ended by request\n"));
}

TEST_F(StopRun, LeavesOutTheStartThatWaitsForTheEndOfTheRun) {
  AddGatedJob("a", "overlap = queue");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("queued"); }));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_EQ(Told("a")["number"], "1");
  EXPECT_EQ(Told("a")["skipReason"], "it was ended by request");
  EXPECT_EQ(LogCount("Task 'a' is due, but it was ended by request: left out"), 1u);
  ASSERT_TRUE(WaitUntilNothingGoesOn());
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(StopRun, TellsOfNoStartThatWaitsWhileTheRunEnds) {
  AddJob("a", "trap '' TERM; echo $$ > $STARTED; read line < $GATE", "overlap = queue");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("queued"); }));
  EXPECT_TRUE(Stop("a"));
  ASSERT_TRUE(WaitUntilTold("a", "skips", "1"));
  EXPECT_EQ(Told("a")["state"], "running");
  EXPECT_FALSE(Told("a").contains("queued"));
  EXPECT_TRUE(Stop("a")) << "it is being ended";
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
}

TEST_F(StopRun, LeavesOutARunThatWaitsForItsSplay) {
  AddJob("a", "echo begun > $STARTED", "splay = 1h");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"}) << "it does not come again";
  EXPECT_EQ(Told("a")["state"], "none");
  EXPECT_EQ(Told("a")["skipReason"], "it was ended by request");
  EXPECT_THAT(Output("a"), EndsWith(" left out: it was ended by request\n"));
  EXPECT_TRUE(WaitUntilNothingGoesOn());
}

TEST_F(StopRun, LeavesOutARunThatWaitsForOthersToEnd) {
  AddGatedJob("a");
  AddGatedJob("b");
  AddGatedJob("c");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  const std::string first = Started();
  Dispatch("b", false);
  Dispatch("c", false);
  ASSERT_TRUE(WaitUntilTold("c", "state", "waiting"));
  EXPECT_TRUE(Stop("b"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"b Ok"});
  EXPECT_TRUE(IsAlive(first));
  OpenGate();
  (void)Started();
  EXPECT_EQ(Told("b")["state"], "none");
  ASSERT_TRUE(WaitUntilTold("c", "state", "running"));
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(3).back(), "c Ok");
}

TEST_F(StopRun, EndsAllRunsThatGoOnBesideEachOther) {
  AddGatedJob("a", "overlap = allow");
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  Dispatch("a", false);
  const std::string second = Started();
  ASSERT_TRUE(WaitUntilTold("a", "pid", second));
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_FALSE(IsAlive(first));
  EXPECT_FALSE(IsAlive(second));
  EXPECT_EQ(LogCount("Task 'a' failed: ended by request after "), 2u);
}

TEST_F(StopRun, LeavesAStartAloneThatComesAfterIt) {
  AddGatedJob("a", "overlap = queue");
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  ASSERT_TRUE(WaitUntilTold("a", "state", "running"));
  EXPECT_TRUE(Stop("a"));
  Dispatch("a", false);
  EXPECT_NE(Started(), first);
  OpenGate();
  EXPECT_TRUE(WaitUntilTold("a", "result", "Ok"));
  EXPECT_EQ(Told("a")["number"], "2");
}

TEST_F(StopRun, LeavesAStartAloneThatComesWithItOfARunThatHasNotBegun) {
  AddJob("a", "echo begun > $STARTED", "splay = 1h");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  AskInOneTurn([&] {
    EXPECT_TRUE(Stop("a"));
    Dispatch("a", true);  // an echo
    Dispatch("a", false);
    Dispatch("a", false);
  });
  ASSERT_TRUE(WaitUntilTold("a", "number", "2"));
  EXPECT_EQ(Told("a")["state"], "waiting");
  EXPECT_EQ(Told("a")["skips"], "2") << "the run that was ended, and one of two starts";
  EXPECT_EQ(m_Scheduler.States(), States{"other Ok"}) << "the next run is to come";
  PassTime(1h);
  EXPECT_EQ(Started(), "begun");
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
}

TEST_F(StopRun, LeavesAStartAloneThatComesWithItBetweenTwoAttempts) {
  AddJob("a", "echo begun > $STARTED; exit 7", "retry = 3 every 5m");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "begun");
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("reason"); }));
  AskInOneTurn([&] {
    EXPECT_TRUE(Stop("a"));
    Dispatch("a", false);
  });
  EXPECT_EQ(Started(), "begun");
  ASSERT_TRUE(WaitUntilTold("a", "number", "2"));
  EXPECT_FALSE(Told("a").contains("skips"));
}

TEST_F(StopRun, EndsAlsoAStartThatCameWithTheStopBefore) {
  AddJob("a", "echo begun > $STARTED", "splay = 1h");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  AskInOneTurn([&] {
    EXPECT_TRUE(Stop("a"));
    Dispatch("a", false);
    EXPECT_TRUE(Stop("a"));
  });
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  EXPECT_EQ(Told("a")["state"], "none");
  EXPECT_EQ(Told("a")["skips"], "2");
  EXPECT_TRUE(WaitUntilNothingGoesOn());
}

TEST_F(StopRun, KnowsWhenNoneIsUnderWay) {
  AddJob("a", "exit 0");
  StartSupervisor();
  EXPECT_FALSE(Stop("a"));
  EXPECT_FALSE(Stop("../a"));
  Dispatch("a", false);
  (void)m_Scheduler.WaitForStates(1);
  EXPECT_FALSE(Stop("a"));
}

TEST_F(StopRun, EndsTheConditionOfARunAndFreesItsPlace) {
  AddJob("a", "true",
         "condition = /bin/sh -c 'echo $$ > \"$0\"; exec sleep 1000' " +
             (m_Directory / "asked").string());
  AddJob("b", "true");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return m_Directory.Has("asked"); }));
  ASSERT_TRUE(WaitUntil([&] { return !m_Directory.Read("asked").empty(); }));
  std::string pid = m_Directory.Read("asked");
  pid.pop_back();
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(Told("a")["skipReason"], "it was ended by request");
  Dispatch("b", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "b Ok");
}

TEST_F(StopRun, KeepsTheEndOfARunBeforeAStartThatIsLeftOut) {
  AddJob("a", "exit 7", "retry = 3 every 5m\noverlap = allow");
  AddGatedJob("b");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("reason"); })) << "between two attempts";
  Dispatch("b", false);
  (void)Started();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "number", "2")) << "waits for the end of b";
  EXPECT_TRUE(Stop("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  OpenGate();
}

TEST_F(StopRun, AtTheHandlersEndLosesNoStartThatWaits) {
  AddGatedJob("a", "retry = never\noverlap = queue");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("queued"); }));
  StopSupervisor();
  EXPECT_EQ(m_Scheduler.WaitForStates(0), States{}) << "it says Started, and comes again";
}

}  // namespace NoxHandlerTest
