// The commands that a job has run when its runs fail, and when one succeeds again.
#include "agent/handler/run/Hooks.h"

#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using States = std::vector<std::string>;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using namespace std::chrono_literals;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class Hooks : public SupervisorFixture {
 protected:
  // Its runs end with the status that the gate lets through; the scripts are its two commands.
  void AddHookedJob(const std::string& onFailure, const std::string& onRecovery = "",
                    const std::string& keys = "retry = never") {
    std::string lines = keys + "\non_failure = " + Script("on_failure", onFailure);
    if (!onRecovery.empty()) {
      lines += "\non_recovery = " + Script("on_recovery", onRecovery);
    }
    AddJob("a", "echo run > $STARTED; read status < $GATE; exit $status", lines);
  }
  void RunOnce(int status) {
    Dispatch("a", false);
    EXPECT_EQ(Started(), "run");
    m_Gate.WriteLine(std::to_string(status));
  }
  // The same to the end of the command that it calls for, and of all others.
  void RunAndRest(int status) {
    RunOnce(status);
    EXPECT_TRUE(WaitUntil([&] { return !m_Supervisor->IsBusy(); }));
  }
  unsigned Calls(const std::string& key) const {
    return LogCount("Task 'a': " + key + " succeeded: ");
  }

 private:
  std::string Script(const std::string& name, const std::string& script) {
    m_Directory.Write(name + ".sh", script + "\n");
    return "/bin/sh \"" + (m_Directory / (name + ".sh")).string() + "\"";
  }
};

}  // namespace

TEST_F(Hooks, AreToldOfTheRun) {
  AddHookedJob(
      "echo $NOX_TASK_ID $NOX_RUN_RESULT $NOX_FAILURES; echo \"<$NOX_RUN_REASON>\"; "
      "echo $NOX_RUN_START $NOX_RUN_END",
      "echo $NOX_TASK_ID $NOX_RUN_RESULT $NOX_FAILURES; echo \"<$NOX_RUN_REASON>\"");
  StartSupervisor();
  RunAndRest(7);
  const auto told = Told("a");
  const std::string closing = "\n-- [-0-9: ]+ on_failure: exit status 0 after [0-9.]+ s\n";
  EXPECT_THAT(Output("a"), MatchesRegex("-- .* exit status 7 after .*\na Failed 1\n<exit status 7 "
                                        "after [0-9.]+ s>\n[0-9]+ [0-9]+" +
                                        closing));
  EXPECT_THAT(Output("a"), HasSubstr("\n" + told.at("start") + " "));
  EXPECT_EQ(told.at("result"), "Failed");
  EXPECT_EQ(RecordedTasks(), States{});
  RunAndRest(0);
  EXPECT_THAT(Output("a"), HasSubstr("\na Ok 1\n<exit status 0 after "));
  EXPECT_EQ(Calls("on_recovery"), 1u);
  EXPECT_EQ(Told("a")["result"], "Ok");
}

TEST_F(Hooks, AreRunOnceAfterSoManyFailuresInARow) {
  AddHookedJob("echo failures $NOX_FAILURES", "echo recovered after $NOX_FAILURES",
               "retry = never\nafter = 2");
  StartSupervisor();
  RunAndRest(1);
  RunAndRest(0);
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 0u);
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 1u);
  EXPECT_THAT(Output("a"), HasSubstr("\nfailures 2\n"));
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 1u) << "not again before a success";
  EXPECT_EQ(Calls("on_recovery"), 0u);
  RunAndRest(0);
  EXPECT_THAT(Output("a"), HasSubstr("\nrecovered after 3\n"));
  RunAndRest(0);
  EXPECT_EQ(Calls("on_recovery"), 1u);
  RunAndRest(1);
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 2u);
}

TEST_F(Hooks, GoOnCountingOverARestart) {
  AddHookedJob("echo failures $NOX_FAILURES", "echo recovered", "retry = never\nafter = 2");
  StartSupervisor();
  RunAndRest(1);
  StopSupervisor();
  StartSupervisor();
  RunAndRest(1);
  EXPECT_THAT(Output("a"), HasSubstr("\nfailures 2\n"));
  StopSupervisor();
  StartSupervisor();
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 1u);
  RunAndRest(0);
  EXPECT_THAT(Output("a"), HasSubstr("\nrecovered\n"));
  StopSupervisor();
  EXPECT_EQ(m_Directory.Read("records/streaks"), "");
}

TEST_F(Hooks, AreForgottenWithTheJobAndWithItsKey) {
  AddHookedJob("echo failures $NOX_FAILURES", "", "retry = never\nafter = 2");
  StartSupervisor();
  RunAndRest(1);
  AddJob("a", "echo run > $STARTED; read status < $GATE; exit $status", "retry = never");
  RunAndRest(1);
  AddHookedJob("echo failures $NOX_FAILURES", "", "retry = never\nafter = 2");
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 0u);
  StopSupervisor();
  std::filesystem::rename(m_Directory / "jobs/a.job", m_Directory / "kept.job");
  StartSupervisor();
  StopSupervisor();
  std::filesystem::rename(m_Directory / "kept.job", m_Directory / "jobs/a.job");
  StartSupervisor();
  RunAndRest(1);
  EXPECT_EQ(Calls("on_failure"), 0u);
}

TEST_F(Hooks, WaitForAllAttempts) {
  AddHookedJob("echo attempts are over", "", "retry = 1 every 30s");
  StartSupervisor();
  RunOnce(1);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  EXPECT_EQ(Calls("on_failure"), 0u);
  PassTime(30s);
  EXPECT_EQ(Started(), "run");
  m_Gate.WriteLine("1");
  ASSERT_TRUE(WaitUntil([&] { return Calls("on_failure") == 1; }));
}

TEST_F(Hooks, FollowARunThatCouldNotBeStarted) {
  AddHookedJob("echo \"<$NOX_RUN_REASON>\"", "",
               "retry = never\nenvironment_file = /nonexistent/e");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a': on_failure failed: ") == 1; }))
      << "it has the job's environment";
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

TEST_F(Hooks, ChangeNothingWhenTheyFail) {
  AddHookedJob("echo no; exit 3");
  StartSupervisor();
  RunAndRest(1);
  EXPECT_EQ(LogCount("Task 'a': on_failure failed: exit status 3 after "), 1u);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_THAT(Told("a")["reason"], HasSubstr("exit status 1 after "));
  EXPECT_THAT(Output("a"), HasSubstr(" on_failure: exit status 3 after "));
}

TEST_F(Hooks, SayWhyTheyCannotBeStarted) {
  AddJob("a", "exit 1", "retry = never\non_failure = /nonexistent/x");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a': on_failure failed: ") == 1; }));
  EXPECT_THAT(Output("a"), MatchesRegex("-- .*\n-- [-0-9: ]+ on_failure: .*/nonexistent/x.*\n"));
}

TEST_F(Hooks, DoNotKeepTheTaskFromItsNextRun) {
  AddHookedJob("echo hook > $STARTED; read line < $GATE; echo told", "echo recovered");
  StartSupervisor();
  RunOnce(1);
  EXPECT_EQ(Started(), "hook");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(RecordedTasks(), States{"a"});
  EXPECT_TRUE(m_Supervisor->IsBusy());
  AddJob("a", "exit 0", "retry = never\non_failure = true\non_recovery = /bin/echo recovered");
  Dispatch("a", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  EXPECT_EQ(Calls("on_recovery"), 0u) << "the two of one task go on one after the other";
  OpenGate();
  ASSERT_TRUE(WaitUntil([&] { return Calls("on_recovery") == 1; }));
  EXPECT_THAT(Output("a"), HasSubstr("told\n-- "));
}

TEST_F(Hooks, TakeThePlaceOfAnEarlierOneThatWaits) {
  AddHookedJob("echo hook > $STARTED; read line < $GATE", "echo recovered");
  StartSupervisor();
  RunOnce(1);
  EXPECT_EQ(Started(), "hook");
  const std::string commands =
      "retry = never\non_failure = /bin/echo failed again\non_recovery = /bin/echo recovered";
  std::size_t ended = 1;
  for (const char* const script : {"exit 0", "exit 2", "exit 0", "exit 3"}) {
    AddJob("a", script, commands);
    Dispatch("a", false);
    EXPECT_EQ(m_Scheduler.WaitForStates(++ended).size(), ended);
  }
  const std::string words = " failed: a later one takes its place";
  EXPECT_EQ(LogCount("Task 'a': on_failure" + words), 1u);
  EXPECT_EQ(LogCount("Task 'a': on_recovery" + words), 1u);
  OpenGate();
  ASSERT_TRUE(WaitUntil([&] { return !m_Supervisor->IsBusy(); }));
  EXPECT_EQ(Calls("on_failure"), 2u);
  EXPECT_EQ(Calls("on_recovery"), 1u);
  EXPECT_THAT(Output("a"), MatchesRegex("(.*\n)*recovered\n-- .*\nfailed again\n-- .*\n"))
      << "the last one tells how things stand";
}

TEST_F(Hooks, TakeAPlaceOfARun) {
  AddHookedJob("echo hook > $STARTED; read line < $GATE");
  AddJob("b", "exit 0");
  StartSupervisor(LongGrace, 1);
  RunOnce(1);
  EXPECT_EQ(Started(), "hook");
  Dispatch("b", false);
  ASSERT_TRUE(
      WaitUntilTold("b", "reason", "as many runs go on as may; it starts after one of them"));
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (States{"a Ok", "b Ok"}));
}

TEST_F(Hooks, EndWithTheHandler) {
  AddHookedJob("echo $$ > $STARTED; read line < $GATE");
  StartSupervisor();
  RunOnce(1);
  const std::string pid = Started();
  StopSupervisor();
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_THAT(Output("a"),
              HasSubstr(" on_failure: ended by the end of the command handler after "));
  EXPECT_EQ(RecordedTasks(), States{});
}

TEST_F(Hooks, AreNotCalledForByTheEndOfTheHandler) {
  AddHookedJob("echo told");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(Started(), "run");
  StopSupervisor();
  EXPECT_THAT(Output("a"), Not(HasSubstr("on_failure")));
  EXPECT_FALSE(m_Directory.Has("records/streaks"));
}

}  // namespace NoxHandlerTest
