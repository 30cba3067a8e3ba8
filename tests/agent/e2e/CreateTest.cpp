// From one line of a command line to a run, and back to nothing.
#include "tests/agent/e2e/AgentFixture.h"

namespace {

class Create : public AgentFixture {
 protected:
  Create() { StartAgent({}, {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}}); }

  void Do(const std::vector<std::string>& arguments) {
    const auto result = Ctl(arguments);
    EXPECT_EQ(0, result.m_Status) << result.m_Error;
  }
};

}  // namespace

TEST_F(Create, HasACommandRun) {
  Do({"create", "hello", "now", "--env", "NAME=world", "--", "echo \"hello $NAME\""});
  ASSERT_TRUE(WaitForState("hello", "Ok"));
  EXPECT_EQ(0U, Ctl({"log", "hello"}).m_Output.rfind("hello world\n-- ", 0));
  Do({"delete", "hello"});
  EXPECT_FALSE(m_Directory.Has("state/var/jobs/hello.job"));
  EXPECT_EQ("", TaskFile("hello"));
}

TEST_F(Create, RunsNothingBeforeItsTime) {
  // Hours from now, whatever the zone; the repetition of yesterday is over.
  const std::string clock = FromNow(6 * 3600).substr(11, 5);
  Do({"create", "poll", "daily at " + clock + " every 10 min for 30 min", "--", "true"});
  Do({"create", "backup", "monthly on 1-30 at " + clock, "--", "true"});
  // A task that runs at once is behind them.
  Do({"create", "hello", "now", "--", "true"});
  ASSERT_TRUE(WaitForState("hello", "Ok"));
  EXPECT_EQ("", LastRun("poll"));
  EXPECT_EQ("", LastRun("backup"));
  EXPECT_EQ(0U,
            Ctl({"describe", "backup"}).m_Output.rfind("monthly on 1-30 at " + clock + "\n", 0));
}

TEST_F(Create, RunsByHandAsOftenAsIsAsked) {
  Do({"create", "backup", "daily at 02:30", "--", "echo run >> " + Path("runs")});
  Do({"run", "backup", "--wait"});
  Do({"run", "backup", "--wait"});
  EXPECT_EQ("run\nrun\n", m_Directory.Read("runs"));
  const std::string list = Ctl({"list"}).m_Output;
  EXPECT_NE(std::string::npos, list.find(" 02:30:00 ")) << "the schedule stays: " << list;
  EXPECT_NE(std::string::npos, list.find("backup  yes      Ok ")) << list;
}

TEST_F(Create, TellsWhatBecameOfARunByHand) {
  Do({"create", "backup", "daily at 02:30", "--", "false"});
  const auto failed = Ctl({"run", "backup", "--wait"});
  EXPECT_EQ(1, failed.m_Status);
  EXPECT_EQ(0U, failed.m_Output.rfind("backup: Failed, exit status 1 after ", 0))
      << failed.m_Output;
  const auto unknown = Ctl({"run", "none"});
  EXPECT_EQ(1, unknown.m_Status);
  EXPECT_NE(std::string::npos, unknown.m_Error.find("there is no task none"));
}

TEST_F(Create, KeepsTheOverlapRuleWhenItRunsByHand) {
  Do({"create", "long", "daily at 02:30", "--",
      "touch " + Path("begun") + "; until test -e " + Path("go") + "; do sleep 0.1; done"});
  EXPECT_EQ("long: started\n", Ctl({"run", "long"}).m_Output);
  ASSERT_TRUE(WaitForFile("begun"));
  const auto second = Ctl({"run", "long", "--wait"});
  EXPECT_EQ(1, second.m_Status);
  EXPECT_EQ("long: left out: its previous run goes on\n", second.m_Output);
  m_Directory.Write("go", "");
}

TEST_F(Create, EndsARunOnRequest) {
  Do({"create", "long", "daily at 02:30", "--", "sleep 1000"});
  const auto idle = Ctl({"stop", "long"});
  EXPECT_EQ(1, idle.m_Status);
  EXPECT_NE(std::string::npos, idle.m_Error.find("no run of the task long is under way"));
  Program run({{NOX_CLIENT, "--runtime-dir", Path("state/run"), "run", "long", "--wait"}},
              Path("ran"));
  ASSERT_TRUE(WaitUntil([&] {
    const auto latest =
        Http("POST", "/v1/command/INoxCommandHandler/GetRun", R"({"taskId":"long"})");
    return latest.m_Body.find("running") != std::string::npos;
  }));
  const auto stopped = Ctl({"stop", "long"});
  EXPECT_EQ(0, stopped.m_Status) << stopped.m_Error;
  EXPECT_EQ("stopped long\n", stopped.m_Output);
  EXPECT_EQ(1, run.WaitForEnd());
  EXPECT_EQ(0U, run.Output().rfind("long: Failed, ended by request after ", 0)) << run.Output();
  EXPECT_NE(std::string::npos, Ctl({"log", "long"}).m_Output.find(" ended by request after "));
}

TEST_F(Create, RunsByHandBesideARunThatGoesOnAndEndsBoth) {
  Do({"create", "long", "daily at 02:30", "--overlap", "allow", "--",
      "echo run >> " + Path("runs") + "; sleep 1000"});
  EXPECT_EQ("long: started\n", Ctl({"run", "long"}).m_Output);
  EXPECT_EQ("long: started\n", Ctl({"run", "long"}).m_Output);
  EXPECT_TRUE(WaitUntil([&] { return CountLines("runs") == 2; }));
  EXPECT_EQ("stopped long\n", Ctl({"stop", "long"}).m_Output);
  EXPECT_EQ(1, Ctl({"stop", "long"}).m_Status);
}
