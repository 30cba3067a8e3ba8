#include "agent/handler/run/Supervisor.h"

#include "agent/handler/system/WallClock.h"
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>

using BaseSDK::AString;
using States = std::vector<std::string>;
using testing::MatchesRegex;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

// What precedes the words in a line of the handler's own.
const std::string Note = "-- [0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2} ";

class Supervisor : public SupervisorFixture {
 protected:
  // Returns when the supervisor has looked at everything posted so far.
  void Settle() {
    AddJob("settle", "exit 0");
    const std::size_t before = m_Scheduler.States().size();
    Dispatch("settle");
    (void)m_Scheduler.WaitForStates(before + 1);
  }
  using RunFacts = std::map<std::string, std::string>;
};

}  // namespace

TEST_F(Supervisor, RunsManyTasksAtOnce) {
  constexpr int Tasks = 40;
  std::vector<TaskBatch::Entry> batch;
  for (int i = 0; i < Tasks; ++i) {
    const std::string name = "task" + std::to_string(i);
    AddGatedJob(name);
    batch.push_back({BaseSDK::AString(name.c_str()), false, true, false});
  }
  StartSupervisor();
  m_Supervisor->Post(batch);
  for (int i = 0; i < Tasks; ++i) {
    ASSERT_NE(Started(), "");
  }
  for (int i = 0; i < Tasks; ++i) {
    OpenGate();
  }
  States states = m_Scheduler.WaitForStates(Tasks);
  EXPECT_EQ(std::count_if(states.begin(), states.end(),
                          [](const std::string& state) { return state.ends_with(" Ok"); }),
            Tasks);
}

TEST_F(Supervisor, LetsTasksWaitWhenAsManyRunAsMay) {
  for (const char* name : {"a", "b", "c"}) {
    AddJob(name, "echo $NOX_TASK_ID > $STARTED; read line < $GATE");
  }
  StartSupervisor(LongGrace, 1);
  Dispatch("a");
  EXPECT_EQ(Started(), "a");
  Dispatch("c");
  Dispatch("b");
  Dispatch("c", false);
  OpenGate();
  EXPECT_EQ(Started(), "c");
  // It is started before the state of the one that it waited for is told.
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  OpenGate();
  EXPECT_EQ(Started(), "b");
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(3), (States{"a Ok", "c Ok", "b Ok"}));
  EXPECT_EQ(LogCount("as many runs go on as may"), 2u);
  EXPECT_EQ(LogCount("Task 'c' is due, but it is waiting to start already: left out"), 1u);
}

TEST_F(Supervisor, StartsNoneThatWaitWhenItStops) {
  AddGatedJob("a");
  AddGatedJob("b");
  StartSupervisor(LongGrace, 1);
  m_Supervisor->Post({{"a", false, true, false}, {"b", false, true, false}});
  (void)Started();
  ASSERT_TRUE(WaitUntil([&] { return Told("b")["state"] == "waiting"; }));
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_EQ(m_Scheduler.States(), States{"a Failed"});
  EXPECT_EQ(Told("b")["skipReason"], "the command handler ends");
  EXPECT_THAT(Output("b"), MatchesRegex(Note + "left out: the command handler ends\n"));
}

TEST_F(Supervisor, TellsOfARunFromItsStartToItsEnd) {
  AddJob("a", "echo $$ > $STARTED; read line < $GATE; exit 7");
  StartSupervisor();
  const long before = WallSeconds();
  EXPECT_TRUE(Told("a").empty());
  Dispatch("a");
  const std::string pid = Started();
  Settle();
  RunFacts run = Told("a");
  const long start = std::stol(run["start"]);
  EXPECT_GE(start, before);
  EXPECT_LE(start, WallSeconds());
  EXPECT_EQ(run, (RunFacts{{"state", "running"},
                           {"number", "1"},
                           {"runs", "1"},
                           {"pid", pid},
                           {"start", run["start"]}}));
  EXPECT_TRUE(m_Supervisor->IsBusy());
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Failed");
  run = Told("a");
  EXPECT_THAT(run["reason"], MatchesRegex("exit status 7 after [0-9]+\\.[0-9]{3} s"));
  EXPECT_GE(std::stol(run["end"]), start);
  EXPECT_EQ(run, (RunFacts{{"state", "ended"},
                           {"number", "1"},
                           {"runs", "1"},
                           {"start", std::to_string(start)},
                           {"end", run["end"]},
                           {"result", "Failed"},
                           {"reason", run["reason"]}}));
}

// Whoever hears of the state asks how it came to be.
TEST_F(Supervisor, KnowsTheEndOfARunBeforeTheSchedulerDoes) {
  AddJob("a", "exit 0");
  std::string state;
  m_Scheduler.OnState([&] { state = Told("a")["state"]; });
  StartSupervisor();
  Dispatch("a");
  (void)m_Scheduler.WaitForStates(1);
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_EQ(state, "ended");
}

TEST_F(Supervisor, TellsOfARunThatCouldNotStart) {
  m_Scheduler.AddStoredTask("a");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  RunFacts run = Told("a");
  EXPECT_EQ(
      run, (RunFacts{{"state", "ended"},
                     {"number", "1"},
                     {"runs", "1"},
                     {"start", run["start"]},
                     {"end", run["start"]},
                     {"result", "Failed"},
                     {"reason", "there is no job file " + (m_Directory / "jobs/a.job").string()}}));
  EXPECT_THAT(Output("a"), MatchesRegex(Note + "there is no job file .*/jobs/a\\.job\n"));
}

TEST_F(Supervisor, SaysInTheOutputFileWhyARunFailed) {
  const std::map<std::string, std::string> reasons{
      {"directory = x", ".*/a\\.job:4: directory: is to be an absolute path"},
      {"user = nosuchuser", ".*/a\\.job:4: user: there is no user \"nosuchuser\""},
      {"directory = /nonexistent",
       "cannot enter the job's directory /nonexistent: No such file or directory"},
      {"", "exit status 3 after [0-9.]* s"}};
  StartSupervisor();
  std::size_t runs = 0;
  std::string output;
  for (const auto& [keys, reason] : reasons) {
    SCOPED_TRACE(keys);
    AddJob("a", "exit 3", keys);
    Dispatch("a");
    EXPECT_EQ(m_Scheduler.WaitForStates(++runs).back(), "a Failed");
    const std::string before = output;
    output = Output("a");
    EXPECT_THAT(output.substr(before.size()), MatchesRegex(Note + reason + "\n"));
  }
}

TEST_F(Supervisor, TellsOfRunsThatWait) {
  AddGatedJob("a", "overlap = queue");
  AddGatedJob("b");
  StartSupervisor(LongGrace, 1);
  Dispatch("a");
  const std::string pid = Started();
  m_Supervisor->Post({{"b", false, true, false}, {"a", false, false, false}});
  m_Supervisor->Post({{"a", false, false, false}});
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("skipped"); }));
  EXPECT_EQ(Told("b"),
            (RunFacts{{"state", "waiting"},
                      {"number", "1"},
                      {"runs", "1"},
                      {"reason", "as many runs go on as may; it starts after one of them"}}));
  RunFacts run = Told("a");
  EXPECT_EQ(run["state"], "running");
  EXPECT_TRUE(run.contains("queued"));
  EXPECT_EQ(run["skipReason"], "its next run is waiting to start already");
  EXPECT_EQ(
      m_Supervisor->Latest().Report(),
      AString(("Command handler: 1 running, 2 waiting\n"
               "  task 'a', process " +
               pid +
               "; its next run is waiting for the end of this one\n"
               "  task 'b', waiting: as many runs go on as may; it starts after one of them\n")
                  .c_str()));
  ASSERT_TRUE(m_Supervisor->Stop());
}

TEST_F(Supervisor, IsBusyWhileItStartsWhatWasPosted) {
  AddGatedJob("a");
  std::atomic<bool> wasBusy = false;
  m_Scheduler.OnQuestion([&] { wasBusy = m_Supervisor->IsBusy(); });
  StartSupervisor();
  Dispatch("a", true, true);  // asks when it has to end
  (void)Started();
  EXPECT_TRUE(wasBusy);
  OpenGate();
  (void)m_Scheduler.WaitForStates(1);
  EXPECT_TRUE(m_Supervisor->Stop());
  EXPECT_FALSE(m_Supervisor->IsBusy());
}

TEST_F(Supervisor, StartsNoSecondCopyWhenTheReloadDispatchesARunningTaskAgain) {
  for (const std::string overlap : {"skip", "queue", "kill"}) {
    SCOPED_TRACE(overlap);
    AddGatedJob(overlap, "overlap = " + overlap);
    if (!m_Supervisor) {
      StartSupervisor();
    }
    const std::size_t before = m_Scheduler.States().size();
    Dispatch(overlap);
    const std::string pid = Started();
    Dispatch(overlap, true);
    Settle();
    EXPECT_TRUE(IsAlive(pid));
    EXPECT_FALSE(Told(overlap).contains("skipped")) << "no start of it was lost";
    EXPECT_EQ(Output(overlap), "");
    OpenGate();
    const States states = m_Scheduler.WaitForStates(before + 2);
    EXPECT_EQ(states.back(), overlap + " Ok");
    Settle();
    EXPECT_FALSE(m_Started.HasLine());
  }
}

TEST_F(Supervisor, LeavesARepetitionOutWhenTheJobWantsThat) {
  AddGatedJob("a", "overlap = skip");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  Dispatch("a", false);
  Settle();
  EXPECT_EQ(LogCount("Task 'a' is due, but its previous run goes on: left out"), 1u);
  RunFacts run = Told("a");
  EXPECT_EQ(run["state"], "running");
  EXPECT_EQ(run["skipReason"], "its previous run goes on");
  EXPECT_GE(std::stol(run["skipped"]), std::stol(run["start"]));
  EXPECT_THAT(Output("a"), MatchesRegex(Note + "left out: its previous run goes on\n"));
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  Settle();
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(Supervisor, StartsOneQueuedRepetitionAfterTheRun) {
  AddGatedJob("a", "overlap = queue");
  StartSupervisor();
  Dispatch("a");
  const std::string first = Started();
  Dispatch("a", false);
  Dispatch("a", false);
  Settle();
  EXPECT_FALSE(m_Started.HasLine());
  OpenGate();
  const std::string second = Started();
  EXPECT_NE(first, second);
  EXPECT_FALSE(IsAlive(first));
  // The state on record is that of the second run, which goes on: still "Started".
  EXPECT_EQ(m_Scheduler.States(), States{"settle Ok"});
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (States{"settle Ok", "a Ok"}));
  Settle();
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(Supervisor, EndsTheRunForARepetitionWhenTheJobWantsThat) {
  AddGatedJob("a", "overlap = kill");
  StartSupervisor();
  Dispatch("a");
  const std::string first = Started();
  Dispatch("a", false);
  const std::string second = Started();
  EXPECT_FALSE(IsAlive(first));
  EXPECT_TRUE(m_Scheduler.States().empty());
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_NE(first, second);
  EXPECT_EQ(LogCount("ended for the task's next run"), 1u);
}

TEST_F(Supervisor, TellsOfRepetitionsThatWaitForTheEndOfTheRunTheyReplace) {
  AddJob("a", "trap '' TERM; echo $$ > $STARTED; read line < $GATE", "overlap = kill");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("queued"); }));
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("skipped"); }));
  EXPECT_EQ(Told("a")["skipReason"], "a later start takes its place");
  OpenGate();
  (void)Started();
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(Supervisor, ReportsAStateAgainThatTheSchedulerCouldNotTake) {
  m_Scheduler.HoldTasks(false);
  AddJob("a", "exit 0");
  StartSupervisor();
  Dispatch("a");
  ASSERT_TRUE(m_Scheduler.WaitForOffers(2));
  EXPECT_TRUE(m_Scheduler.States().empty());
  m_Scheduler.HoldTasks(true);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

TEST_F(Supervisor, ReportsAStateWhenTheSchedulerIsBack) {
  m_Scheduler.BeThere(false);
  AddJob("a", "exit 0");
  StartSupervisor();
  Dispatch("a");
  ASSERT_TRUE(m_Scheduler.WaitForOffers(2));
  m_Scheduler.BeThere(true);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

// Between the end of a run and the record of it the reload may have read "Started" once more.
TEST_F(Supervisor, StartsNothingForAReloadThatMissedTheStateOfTheRun) {
  m_Scheduler.HoldTasks(false);
  AddJob("a", "echo run > $STARTED");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(Started(), "run");
  ASSERT_TRUE(m_Scheduler.WaitForOffers(2));
  Dispatch("a", true);
  ASSERT_TRUE(m_Scheduler.WaitForOffers(5));
  m_Scheduler.HoldTasks(true);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  Settle();
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(Supervisor, DropsTheStateOfATaskThatIsGone) {
  AddJob("a", "exit 0");
  m_Scheduler.RemoveTask("a");
  StartSupervisor();
  Dispatch("a");
  ASSERT_TRUE(m_Scheduler.WaitForOffers(1));
  Settle();
  EXPECT_EQ(m_Scheduler.States(), States{"settle Ok"});
  EXPECT_EQ(LogCount("The scheduler did not take the state 'Ok' of task 'a'"), 1u);
}

TEST_F(Supervisor, EndsAllRunsWhenItStops) {
  AddGatedJob("a", "overlap = queue");
  StartSupervisor();
  Dispatch("a");
  const std::string pid = Started();
  Dispatch("a", false);
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(m_Scheduler.States(), States{"a Failed"});
  EXPECT_EQ(LogCount("Task 'a' failed: ended by the end of the command handler"), 1u);
  EXPECT_FALSE(m_Supervisor->IsBusy());
  EXPECT_FALSE(m_Started.HasLine());
  EXPECT_EQ(RecordedTasks(), States{});
}

TEST_F(Supervisor, StopsThoughARunIgnoresThat) {
  AddJob("a", "trap '' TERM; echo $$ > $STARTED; while :; do sleep 1; done");
  StartSupervisor(std::chrono::milliseconds(100));
  Dispatch("a");
  const std::string pid = Started();
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_FALSE(IsAlive(pid));
}

}  // namespace NoxHandlerTest
