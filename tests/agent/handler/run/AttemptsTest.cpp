// How often a task that fails is tried, and what is told of it.
#include "agent/handler/run/Attempts.h"

#include "tests/agent/handler/run/SupervisorFixture.h"

#include <BaseSDK/ADateTime.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using States = std::vector<std::string>;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::chrono_literals;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

const std::string Moment = "[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}";

class Attempts : public SupervisorFixture {
 protected:
  // Its job says which attempt it is, and ends with the status that the gate lets through.
  void AddTriedJob(const std::string& name, const std::string& keys) {
    AddJob(name, "echo $NOX_ATTEMPT > $STARTED; read status < $GATE; exit $status", keys);
  }
  void End(int status) { m_Gate.WriteLine(std::to_string(status)); }
};

}  // namespace

TEST_F(Attempts, AreMadeUntilOneSucceeds) {
  AddTriedJob("a", "retry = 3 every 5m");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "1");
  End(7);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  const std::string start = Told("a")["start"];
  EXPECT_THAT(
      Told("a")["reason"],
      MatchesRegex("exit status 7 after [0-9.]+ s, attempt 1 of 4; the next one begins at " +
                   Moment));
  EXPECT_TRUE(m_Supervisor->IsBusy());
  EXPECT_TRUE(m_Scheduler.States().empty()) << "the state on record stays Started";
  PassTime(5min);
  EXPECT_EQ(Started(), "2");
  EXPECT_EQ(Told("a")["start"], start);
  End(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Ok");
  EXPECT_FALSE(Told("a").contains("final"));
  EXPECT_THAT(Output("a"),
              MatchesRegex("-- " + Moment +
                           " exit status 7 after [0-9.]+ s, attempt 1 "
                           "of 4\n-- " +
                           Moment + " exit status 0 after [0-9.]+ s, attempt 2 of 4\n"));
}

TEST_F(Attempts, AreWaitedForAsLongAsTheJobSays) {
  AddTriedJob("a", "retry = 1 every 15m");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  PassTime(10min);
  EXPECT_EQ(Told("a")["state"], "waiting");
  PassTime(5min);
  EXPECT_EQ(Started(), "2");
  End(0);
  (void)m_Scheduler.WaitForStates(1);
}

TEST_F(Attempts, LetTheSchedulerGoWhenTheLastOneHasFailed) {
  AddTriedJob("a", "retry = 1 every 30s");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  PassTime(30s);
  EXPECT_EQ(Started(), "2");
  End(2);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_THAT(Told("a")["reason"], MatchesRegex("exit status 2 after [0-9.]+ s, attempt 2 of 2"));
}

TEST_F(Attempts, AreNoneButTheFirstForAJobThatIsNeverTriedAgain) {
  EXPECT_EQ(RunToEnd("echo attempt $NOX_ATTEMPT; exit 3", "retry = never"), "a Ok");
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_THAT(Output("a"),
              MatchesRegex("attempt 1\n-- " + Moment + " exit status 3 after [0-9.]+ s\n"));
}

TEST_F(Attempts, AreLeftToTheSchedulerUnlessTheJobSaysOtherwise) {
  EXPECT_EQ(RunToEnd("exit 3", "retry = hourly"), "a Failed");
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_FALSE(Told("a").contains("final"));
}

TEST_F(Attempts, AreRememberedOverARestartWhenAllHaveFailed) {
  AddTriedJob("a", "retry = never");
  AddTriedJob("b", "retry = never");
  StartSupervisor();
  for (const char* name : {"a", "b"}) {
    Dispatch(name, false);
    (void)Started();
    End(1);
    ASSERT_TRUE(WaitUntilTold(name, "final", "1"));
  }
  (void)m_Scheduler.WaitForStates(2);
  auto told = Told("a");
  told.erase("number");  // it is none of the next agent's
  told.erase("runs");
  StopSupervisor();
  std::filesystem::remove(m_Directory / "jobs/b.job");
  StartSupervisor();
  EXPECT_EQ(Told("a"), told);
  EXPECT_TRUE(Told("b").empty()) << "a task without a job is gone";
  Dispatch("a", false);
  (void)Started();
  End(0);
  (void)m_Scheduler.WaitForStates(3);
  StopSupervisor();
  StartSupervisor();
  EXPECT_TRUE(Told("a").empty()) << "it has succeeded since";
}

TEST_F(Attempts, FailAlsoWhenTheyCannotBeStarted) {
  AddTriedJob("a", "retry = 1 every 30s\ndirectory = /nonexistent");
  AddTriedJob("b", "retry = 1 every 30s\nuser = nosuchuser");
  StartSupervisor();
  for (const char* name : {"a", "b"}) {
    Dispatch(name, false);
    ASSERT_TRUE(WaitUntilTold(name, "state", "waiting"));
    PassTime(30s);
    ASSERT_TRUE(WaitUntilTold(name, "final", "1"));
    EXPECT_THAT(Output(name), testing::ContainsRegex("attempt 1 of 2\n-- .*attempt 2 of 2\n"));
  }
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (States{"a Ok", "b Ok"}));
}

TEST_F(Attempts, HaveATimeoutEach) {
  AddJob("a", "echo $NOX_ATTEMPT > $STARTED; sleep 1000", "timeout = 1\nretry = 1 every 30s");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  PassTime(30s);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Started(), "1");
  EXPECT_EQ(Started(), "2");
  EXPECT_EQ(LogCount("ended by its timeout of 1 s after "), 2u);
}

TEST_F(Attempts, CountAsOneRunBetweenThem) {
  AddTriedJob("a", "retry = 3 every 5m\noverlap = skip");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("a", true);  // an echo
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "skipReason", "its previous run goes on"));
  EXPECT_EQ(LogCount("Task 'a' is due, but its previous run goes on: left out"), 2u);
  PassTime(5min);
  EXPECT_EQ(Started(), "2");
  EXPECT_EQ(Told("a")["skipReason"], "its previous run goes on");
  End(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

TEST_F(Attempts, LetTheNextRunWaitForTheLastOfThem) {
  AddTriedJob("a", "retry = 1 every 5m\noverlap = queue");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("queued"); }));
  PassTime(5min);
  EXPECT_EQ(Started(), "2");
  End(1);
  EXPECT_EQ(Started(), "1") << "of the next run";
  End(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Ok");
}

TEST_F(Attempts, GiveWayToTheNextRunWhenTheJobWantsThat) {
  AddTriedJob("a", "retry = 3 every 5m\noverlap = kill");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("a", false);
  EXPECT_EQ(Started(), "1") << "of the next run";
  EXPECT_THAT(Output("a"), HasSubstr("not tried again: the task's next run takes its place\n"));
  End(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

TEST_F(Attempts, TakeNoPlaceOfARunBetweenThem) {
  AddTriedJob("a", "retry = 1 every 5m");
  AddGatedJob("b");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("b", false);
  (void)Started();
  PassTime(5min);
  ASSERT_TRUE(WaitUntil([&] {
    return Told("a")["reason"].ends_with(
        "attempt 1 of 2; as many runs go on as may, and the next one begins after one of them");
  }));
  OpenGate();
  EXPECT_EQ(Started(), "2");
  End(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (States{"b Ok", "a Ok"}));
}

TEST_F(Attempts, EndWithTheHandlerAndComeAgainAfterIt) {
  AddTriedJob("a", "retry = 3 every 5m");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  End(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_EQ(m_Scheduler.States(), States{"a Failed"});
  EXPECT_THAT(Output("a"), HasSubstr("not tried again: the command handler ends\n"));
  EXPECT_THAT(Told("a")["reason"],
              MatchesRegex("exit status 1 after [0-9.]+ s, attempt 1 of 4; not tried again: the "
                           "command handler ends"));
}

TEST_F(Attempts, EndWithTheActivePeriod) {
  AddTriedJob("a", "retry = 3 every 15m");
  const long begin = BaseSDK::ADateTime::Now().GetTime() - 57;
  m_Scheduler.AddStoredTask(
      "a", "<Task><Schedule><Trigger Type='0' Duration='1' KillAtEnd='1'><BeginDate>" +
               BaseSDK::ADateTime(begin).ToString("%Y/%m/%d %H:%M:%S").ToUtf8() +
               "</BeginDate></Trigger></Schedule></Task>");
  StartSupervisor();
  Dispatch("a", false, true);
  (void)Started();
  End(1);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_THAT(Told("a")["reason"], testing::ContainsRegex("its active period|end of its active"));
  EXPECT_EQ(Told("a")["final"], "1");
}

}  // namespace NoxHandlerTest
