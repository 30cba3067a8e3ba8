// Tasks come due, run, and their files tell the truth.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/agent/e2e/AgentFixture.h"

namespace {

class Runs : public AgentFixture {};

}  // namespace

TEST_F(Runs, RunATaskAsSoonAsPossibleAndSayOk) {
  StartAgent();
  AddAsapTask("a", "echo done; touch ran");
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_TRUE(m_Directory.Has("ran"));
  EXPECT_EQ(m_Directory.Read("state/var/output/a.log").find("done\n-- "), 0u);
}

TEST_F(Runs, SayFailedWhenTheCommandFails) {
  StartAgent();
  AddAsapTask("a", "exit 1");
  EXPECT_TRUE(WaitForState("a", "Failed"));
}

TEST_F(Runs, SayFailedWithoutAJob) {
  StartAgent();
  AddTask("a", "<Trigger Type='-1'/>");
  EXPECT_TRUE(WaitForState("a", "Failed"));
  EXPECT_TRUE(m_Agent->WaitForOutput("Task 'a' failed: cannot open the job file"));
}

TEST_F(Runs, SayStartedWhileTheCommandRuns) {
  StartAgent();
  AddAsapTask("a", "touch running; while [ ! -e go ]; do sleep 0.05; done");
  ASSERT_TRUE(WaitForFile("running"));
  EXPECT_EQ(State("a"), "Started");
  m_Directory.Write("go", "");
  EXPECT_TRUE(WaitForState("a", "Ok"));
}

TEST_F(Runs, StartInTheSecondTheyAreDue) {
  StartAgent();
  AddJob("a", "date '+%Y-%m-%d %H:%M:%S' > at");
  std::string begin = FromNow(2);
  AddTask("a", Trigger(0, begin));
  ASSERT_TRUE(WaitForState("a", "Ok"));
  std::replace(begin.begin(), begin.end(), '/', '-');
  EXPECT_EQ(LastRun("a"), begin + " Ok");
  EXPECT_EQ(m_Directory.Read("at"), begin + "\n");
}

TEST_F(Runs, RepeatAtTheirInterval) {
  StartAgent();
  AddJob("a", "date +%s >> at");
  AddTask("a", Trigger(1, FromNow(1), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  ASSERT_TRUE(WaitUntil([&] { return CountLines("at") >= 4; }));
  std::istringstream times(m_Directory.Read("at"));
  long before = 0;
  times >> before;
  for (int i = 1; i < 4; ++i) {
    long now = 0;
    times >> now;
    EXPECT_EQ(now, before + 1);
    before = now;
  }
}

TEST_F(Runs, LeaveOutRepetitionsWhileTheCommandRuns) {
  StartAgent();
  AddJob("a", "echo run >> runs; while [ ! -e go ]; do sleep 0.05; done", "overlap = skip");
  AddTask("a", Trigger(1, FromNow(1), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  ASSERT_TRUE(m_Agent->WaitForOutput("Task 'a' is due, but its previous run goes on: left out"));
  EXPECT_EQ(CountLines("runs"), 1u);
  EXPECT_EQ(State("a"), "Started");
}

// The hourly reload does to a running task what its replacement does: it is read anew as never run.
TEST_F(Runs, StartNoSecondCopyOfATaskThatIsReadAnew) {
  StartAgent();
  AddAsapTask("a", "echo run >> runs; while [ ! -e go ]; do sleep 0.05; done", "overlap = kill");
  ASSERT_TRUE(WaitForFile("runs"));
  AddTask("a", "<Trigger Type='-1'/>");
  ASSERT_TRUE(m_Agent->WaitForOutput("Task 'a' is due, but its previous run goes on: left out"));
  EXPECT_EQ(State("a"), "Started");
  m_Directory.Write("go", "");
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_EQ(CountLines("runs"), 1u);
}

TEST_F(Runs, EndWithTheAgentAndStartAgainWithTheNext) {
  StartAgent();
  AddAsapTask("a", "echo $$ >> runs; [ -e go ] || exec sleep 1000");
  ASSERT_TRUE(WaitUntil([&] { return CountLines("runs") == 1; }));
  EXPECT_EQ(StopAgent(), 0);
  EXPECT_EQ(State("a"), "Failed");
  EXPECT_FALSE(IsAlive(std::stoi(m_Directory.Read("runs"))));
  m_Directory.Write("go", "");
  StartAgent();
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_EQ(CountLines("runs"), 2u);
}

TEST_F(Runs, WaitUntilAPolicyRefreshIsOver) {
  StartAgent();
  EXPECT_EQ(Ctl({"notify", "1"}).m_Status, 0);
  AddAsapTask("a", "touch ran");
  AddAsapTask("b", "touch ran");
  EXPECT_EQ(LastRun("a"), "");
  EXPECT_EQ(Ctl({"notify", "2"}).m_Status, 0);
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_TRUE(WaitForState("b", "Ok"));
}

TEST_F(Runs, GoOnManyAtATime) {
  StartAgent();
  EXPECT_EQ(Ctl({"notify", "1"}).m_Status, 0);
  constexpr int kTasks = 25;
  for (int i = 0; i < kTasks; ++i) {
    AddAsapTask("task" + std::to_string(i), "echo run >> runs");
  }
  EXPECT_EQ(Ctl({"notify", "2"}).m_Status, 0);
  for (int i = 0; i < kTasks; ++i) {
    EXPECT_TRUE(WaitForState("task" + std::to_string(i), "Ok"));
  }
  EXPECT_EQ(CountLines("runs"), static_cast<std::size_t>(kTasks));
}
