// Tasks come due, run, and their files tell the truth.
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <sstream>
#include <vector>

namespace {

class Runs : public AgentFixture {
 protected:
  std::vector<long> Numbers(const std::string& name) const {
    std::istringstream text(m_Directory.Has(name) ? m_Directory.Read(name) : std::string());
    return {std::istream_iterator<long>(text), {}};
  }
};

// How many of them at most follow each other by one.
int LongestCount(const std::vector<long>& numbers) {
  int count = 0;
  int longest = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    count = i > 0 && numbers[i] == numbers[i - 1] + 1 ? count + 1 : 1;
    longest = std::max(longest, count);
  }
  return longest;
}

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

// The scheduler takes the task for finished; the handler knows better, and so does the next agent.
TEST_F(Runs, AreNotTriedAgainWhenTheJobSaysSoAndAreStillToldAsFailed) {
  const auto row = [&] { return Ctl({"list"}).m_Output; };
  StartAgent();
  AddAsapTask("a", "echo run >> runs; exit 3", "retry = never");
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_NE(row().find("Failed"), std::string::npos) << row();
  EXPECT_EQ(StopAgent(), 0);
  StartAgent();
  EXPECT_NE(row().find("Failed"), std::string::npos) << row();
  const std::string reason = Ctl({"explain", "a"}).m_Output;
  EXPECT_NE(reason.find(" failed: exit status 3 after "), std::string::npos) << reason;
  AddAsapTask("b", "exit 0");
  EXPECT_TRUE(WaitForState("b", "Ok"));  // the scheduler has looked at all tasks
  EXPECT_EQ(CountLines("runs"), 1U);
}

TEST_F(Runs, SayFailedWithoutAJob) {
  StartAgent();
  AddTask("a", "<Trigger Type='-1'/>");
  EXPECT_TRUE(WaitForState("a", "Failed"));
  EXPECT_TRUE(m_Agent->WaitForOutput("Task 'a' failed: there is no job file"));
}

TEST_F(Runs, AreWarnedOfWhenATaskIsAddedWhoseJobCannotBeRun) {
  StartAgent();
  const std::string document = Document(Trigger(0, FromNow(3600)));
  auto added = Ctl({"add", "-", "--id", "a"}, document);
  EXPECT_EQ(added.m_Status, 0);
  EXPECT_EQ(added.m_Output, "a\n");
  EXPECT_EQ(added.m_Error, "noxctl: warning: the task's job cannot be run: there is no job file " +
                               Path("state/var/jobs/a.job") +
                               "; the task's runs fail; mend the job before the task is due\n");
  AddJob("a", "exit 0", "user = nosuchuser");
  added = Ctl({"add", "-", "--id", "a"}, document);
  EXPECT_NE(added.m_Error.find("a.job:5: user: there is no user \"nosuchuser\""), std::string::npos)
      << added.m_Error;
  AddJob("a", "exit 0");
  EXPECT_EQ(Ctl({"add", "-", "--id", "a"}, document).m_Error, "");
}

// The scheduler has recorded the start that is left out; the handler knows better.
TEST_F(Runs, TellOfAStartThatWasLeftOutWhileTheyGoOn) {
  StartAgent();
  AddJob("a", "touch running; while [ ! -e go ]; do sleep 0.05; done");
  AddTask("a", Trigger(1, FromNow(0), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  ASSERT_TRUE(WaitForFile("running"));
  const auto run = [&] {
    return Http("POST", "/v1/command/INoxCommandHandler/GetRun", R"({"taskId":"a"})").m_Body;
  };
  EXPECT_TRUE(WaitUntil([&] { return run().find("\"skipped\"") != std::string::npos; }));
  EXPECT_NE(run().find("\"state\":\"running\""), std::string::npos) << run();
  EXPECT_NE(run().find("\"skipReason\":\"its previous run goes on\""), std::string::npos) << run();
  EXPECT_EQ(State("a"), "Started");
  EXPECT_NE(m_Directory.Read("state/var/output/a.log").find(" left out: its previous run goes on"),
            std::string::npos);
  m_Directory.Write("go", "");
  EXPECT_TRUE(WaitForState("a", "Ok"));
}

TEST_F(Runs, SayStartedWhileTheCommandRuns) {
  StartAgent();
  AddAsapTask("a", "touch running; while [ ! -e go ]; do sleep 0.05; done");
  ASSERT_TRUE(WaitForFile("running"));
  EXPECT_EQ(State("a"), "Started");
  m_Directory.Write("go", "");
  EXPECT_TRUE(WaitForState("a", "Ok"));
}

// A machine that stalls can take that second away, so one of many starts is enough, given more and
// more time to be added; but none may come early.
TEST_F(Runs, StartInTheSecondTheyAreDue) {
  StartAgent();
  bool isInTime = false;
  for (int attempt = 0; attempt < 10 && !isInTime; ++attempt) {
    const std::string id = "task" + std::to_string(attempt);
    AddJob(id, "date '+%Y-%m-%d %H:%M:%S' > at");
    std::string begin = FromNow(2 + attempt);
    AddTask(id, Trigger(0, begin));
    ASSERT_TRUE(WaitForState(id, "Ok"));
    std::replace(begin.begin(), begin.end(), '/', '-');
    EXPECT_GE(LastRun(id), begin + " Ok");
    EXPECT_GE(m_Directory.Read("at"), begin + "\n");
    isInTime = LastRun(id) == begin + " Ok" && m_Directory.Read("at") == begin + "\n";
  }
  EXPECT_TRUE(isInTime);
}

// Four in a row are enough, at whatever time the machine stalls for none of them.
TEST_F(Runs, RepeatAtTheirInterval) {
  StartAgent();
  AddJob("a", "date +%s >> at");
  const long begin = std::time(nullptr) + 1;
  AddTask("a", Trigger(1, FromNow(1), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  std::vector<long> times;
  ASSERT_TRUE(WaitUntil([&] {
    times = Numbers("at");
    return LongestCount(times) >= 4;
  }));
  EXPECT_GE(times.front(), begin);
  EXPECT_LE(static_cast<long>(times.size()), times.back() - begin + 1) << "one a second at most";
}

TEST_F(Runs, LeaveOutRepetitionsWhileTheCommandRuns) {
  StartAgent();
  AddJob("a", "echo run >> runs; while [ ! -e go ]; do sleep 0.05; done", "overlap = skip");
  AddTask("a", Trigger(1, FromNow(1), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  ASSERT_TRUE(m_Agent->WaitForOutput("Task 'a' is due, but its previous run goes on: left out"));
  EXPECT_TRUE(WaitUntil([&] { return CountLines("runs") > 0; })) << "its shell may take its time";
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
  constexpr int Tasks = 25;
  for (int i = 0; i < Tasks; ++i) {
    AddAsapTask("task" + std::to_string(i), "echo run >> runs");
  }
  EXPECT_EQ(Ctl({"notify", "2"}).m_Status, 0);
  for (int i = 0; i < Tasks; ++i) {
    EXPECT_TRUE(WaitForState("task" + std::to_string(i), "Ok"));
  }
  EXPECT_EQ(CountLines("runs"), static_cast<std::size_t>(Tasks));
}
