// A job whose condition says before each run whether it may begin.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using States = std::vector<std::string>;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using namespace std::chrono_literals;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class Condition : public SupervisorFixture {
 protected:
  void AddConditionalJob(const std::string& condition, const std::string& script,
                         const std::string& keys = "") {
    m_Directory.Write("condition.sh", condition + "\n");
    AddJob("a", script,
           "condition = /bin/sh " + (m_Directory / "condition.sh").string() + "\n" + keys);
  }
  // One whose condition is answered by Answer, each time after Started() has said "asked".
  void AddAskedJob(const std::string& keys = "") {
    AddConditionalJob(
        "echo asked > $STARTED; read status < $GATE; echo answer $status; exit $status",
        "echo run > $STARTED", keys);
  }
  void Answer(int status) { m_Gate.WriteLine(std::to_string(status)); }
  std::string RunConditional(const std::string& condition, const std::string& keys = "") {
    AddConditionalJob(condition, "echo the job", keys);
    StartSupervisor();
    Dispatch("a", false);
    const auto states = m_Scheduler.WaitForStates(1);
    return states.size() == 1 ? states[0] : "not one state";
  }
};

}  // namespace

TEST_F(Condition, LetsTheJobRun) {
  EXPECT_EQ(RunConditional("echo it may; exit 0"), "a Ok");
  EXPECT_EQ(Told("a")["result"], "Ok");
  EXPECT_THAT(Output("a"), MatchesRegex("the job\n-- [-0-9: ]+ exit status 0 after [0-9.]+ s\n"));
  EXPECT_EQ(LogCount("Task 'a': it may"), 1u) << "what it says is for the log";
  EXPECT_EQ(LogCount("Task 'a': condition succeeded: exit status 0 after "), 1u);
}

TEST_F(Condition, LeavesTheRunOutAndSaysWhy) {
  EXPECT_EQ(RunConditional("echo first; echo on battery; echo; exit 1", "retry = never"), "a Ok");
  auto told = Told("a");
  EXPECT_FALSE(told["skipped"].empty());
  told.erase("skipped");
  EXPECT_EQ(told,
            (std::map<std::string, std::string>{{"state", "none"},
                                                {"skipReason", "its condition says no: on battery"},
                                                {"runs", "1"},
                                                {"skips", "1"}}));
  EXPECT_THAT(Output("a"),
              MatchesRegex("-- [-0-9: ]+ left out: its condition says no: on battery\n"));
  EXPECT_EQ(LogCount("Task 'a' is due, but its condition says no: on battery: left out"), 1u);
  EXPECT_EQ(RecordedTasks(), States{});
}

TEST_F(Condition, NeedsNoWords) {
  EXPECT_EQ(RunConditional("exit 1"), "a Ok");
  EXPECT_EQ(Told("a")["skipReason"], "its condition says no");
}

TEST_F(Condition, IsQuotedWithItsFirst200BytesInWholeCharacters) {
  EXPECT_EQ(RunConditional("printf 'x'; printf '\\303\\274%.0s' $(seq 150); exit 1"), "a Ok");
  std::string words = "x";
  for (int i = 0; i < 99; ++i) {
    words += "\xC3\xBC";
  }
  EXPECT_EQ(Told("a")["skipReason"], "its condition says no: " + words);
}

TEST_F(Condition, FailsTheRunWithAnyOtherStatus) {
  EXPECT_EQ(RunConditional("echo no idea; exit 2"), "a Failed");
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_THAT(Told("a")["reason"],
              MatchesRegex("its condition: exit status 2 after [0-9.]+ s: no idea"));
  EXPECT_THAT(Output("a"),
              MatchesRegex("-- [-0-9: ]+ its condition: exit status 2 after [0-9.]+ s: no idea\n"));
}

TEST_F(Condition, FailsTheRunForGoodWhenNobodyTriesAgain) {
  EXPECT_EQ(RunConditional("kill -9 $$", "retry = 3 every 5m\non_failure = /bin/echo told"),
            "a Ok");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_THAT(Told("a")["reason"], HasSubstr("its condition: signal 9 "));
  EXPECT_TRUE(WaitUntil([&] { return LogCount("Task 'a': on_failure succeeded: ") == 1; }));
}

TEST_F(Condition, FailsTheRunWhenItCannotBeStarted) {
  AddJob("a", "exit 0", "condition = /nonexistent/x");
  AddJob("b", "exit 0", "condition = true\nenvironment_file = /nonexistent/e");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_THAT(Told("a")["reason"], MatchesRegex("its condition: .*/nonexistent/x.*"));
  Dispatch("b", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "b Failed");
  EXPECT_THAT(Told("b")["reason"], MatchesRegex("its condition: .*/nonexistent/e.*"));
  EXPECT_TRUE(WaitUntil([&] { return !m_Supervisor->IsBusy(); }));
}

TEST_F(Condition, IsAskedOncePerRun) {
  AddConditionalJob("echo asked", "echo $NOX_ATTEMPT > $STARTED; exit 1", "retry = 1 every 30s");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "1");
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  ASSERT_TRUE(WaitUntil([&] { return Told("a")["reason"].starts_with("exit status 1"); }));
  PassTime(30s);
  EXPECT_EQ(Started(), "2");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(LogCount("Task 'a': asked"), 1u);
}

TEST_F(Condition, IsAskedAgainForAsLongAsTheRunMayBeLate) {
  AddAskedJob("max_late = 1h");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "asked");
  EXPECT_EQ(Told("a")["state"], "waiting");
  Answer(1);
  ASSERT_TRUE(WaitUntil([&] { return Told("a")["reason"].starts_with("its condition says no"); }));
  EXPECT_THAT(Told("a")["reason"],
              MatchesRegex("its condition says no: answer 1; it is asked again at [-0-9: ]+"));
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "skipReason", "it is waiting to start already"));
  PassTime(30s);
  EXPECT_EQ(Started(), "asked");
  Answer(0);
  EXPECT_EQ(Started(), "run");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_THAT(Output("a"), Not(HasSubstr("its condition says no")));
}

TEST_F(Condition, IsAskedNoMoreWhenTheRunWouldBeTooLate) {
  AddAskedJob("max_late = 1h");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "asked");
  Answer(1);
  ASSERT_TRUE(WaitUntil([&] { return Told("a")["reason"].starts_with("its condition says no"); }));
  PassTime(1h);
  EXPECT_EQ(Started(), "asked");
  Answer(1);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["skipReason"], "its condition says no: answer 1");
}

TEST_F(Condition, TakesAPlaceOfARunWhileItIsAsked) {
  AddAskedJob();
  AddJob("b", "exit 0");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  EXPECT_EQ(Started(), "asked");
  EXPECT_EQ(RecordedTasks(), States{"a"});
  Dispatch("b", false);
  ASSERT_TRUE(
      WaitUntilTold("b", "reason", "as many runs go on as may; it starts after one of them"));
  Answer(1);
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (States{"a Ok", "b Ok"}));
}

TEST_F(Condition, EndsWithTheHandlerAndTheRunComesAgain) {
  AddConditionalJob("echo $$ > $STARTED; read line < $GATE", "exit 0", "retry = never");
  StartSupervisor();
  Dispatch("a", false);
  const std::string pid = Started();
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(m_Scheduler.States(), States{"a Failed"}) << "else it would not come again";
  EXPECT_FALSE(Told("a").contains("final"));
  EXPECT_THAT(Told("a")["reason"],
              HasSubstr("its condition: ended by the end of the command handler after "));
}

TEST_F(Condition, IsNotAskedAgainWhenTheHandlerEnds) {
  AddAskedJob("max_late = 1h");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "asked");
  Answer(1);
  ASSERT_TRUE(WaitUntil([&] { return Told("a")["reason"].starts_with("its condition says no"); }));
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_TRUE(m_Scheduler.States().empty()) << "it says Started, and comes again";
}

}  // namespace NoxHandlerTest
