// noxctl watch against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NoxAgentTest {

TEST_F(Client, WatchTellsEachRunOnceWithItsOutcome) {
  const auto setRun = [](const char* runTime) {
    return [runTime](FakeAgent& agent) {
      agent.SetTask("T1", {TaskXml(NowTrigger, runTime), true, {}});
    };
  };
  const std::string changed = R"({"code":100,"id":"T1"})";
  m_Agent.SetTask("T1", {TaskXml(NowTrigger, "2026-06-14 08:00:00 Ok"), true, {}});
  m_Agent.SetSteps({{{}, changed, 1},  // the next run moved: nothing to tell
                    {setRun("2026-06-15 08:00:00 Started"), changed, 1},
                    {setRun("2026-06-15 08:00:00 Failed"), changed, 1},
                    {{}, R"({"code":7,"text":"not ours"})", 0},
                    {{}, "no JSON at all", 0},
                    {{}, R"({"code":102,"id":"T2"})", 0},
                    {{}, R"({"code":101,"id":"T2"})", 0},
                    {setRun("2026-06-15 09:00:00 Ok"), changed, 1}});
  EXPECT_EQ(0, Run({"watch", "--runs", "2", "--json"})) << Err();
  std::istringstream lines(Out());
  std::vector<std::string> told;
  for (std::string line; std::getline(lines, line);) {
    const Json event = Json::Parse(line);
    told.push_back(event.At("task").Text() + " " + event.At("event").Text() + " " +
                   event.Text("start", "") + " " + event.Text("state", ""));
  }
  const std::vector<std::string> expected = {"T1 started 2026-06-15 08:00:00 Started",
                                             "T1 finished 2026-06-15 08:00:00 Failed",
                                             "T2 added  ",
                                             "T2 deleted  ",
                                             "T1 started 2026-06-15 09:00:00 Started",
                                             "T1 finished 2026-06-15 09:00:00 Ok"};
  EXPECT_EQ(expected, told);
}

TEST_F(Client, WatchTellsWhyARunFailedWhenTheHandlerKnows) {
  const auto setRun = [](const char* runTime, std::map<std::string, std::string> run) {
    return [runTime, run = std::move(run)](FakeAgent& agent) {
      agent.SetTask("T1", {TaskXml(NowTrigger, runTime), true, {}, run});
    };
  };
  const std::string changed = R"({"code":100,"id":"T1"})";
  const auto steps = [&] {
    return std::vector<FakeAgent::Step>{
        {setRun(
             "2026-06-15 08:00:00 Failed",
             {{"state", "ended"}, {"result", "Failed"}, {"reason", "exit status 1 after 2.3 s"}}),
         changed, 2},
        {setRun("2026-06-15 09:00:00 Skipped", {{"state", "running"},
                                                {"skipped", "1781506800"},
                                                {"skipReason", "its previous run goes on"}}),
         changed, 2},
        {setRun("2026-06-15 10:00:00 Failed", {}), changed, 2},
        {setRun("2026-06-15 11:00:00 Ok", {{"state", "ended"},
                                           {"result", "Failed"},
                                           {"final", "1"},
                                           {"end", "1781514003"},
                                           {"reason", "exit status 4"}}),
         changed, 2}};
  };
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(steps());
  ASSERT_EQ(0, Run({"watch", "--runs", "4"})) << Err();
  EXPECT_NE(std::string::npos, Out().find(": exit status 1 after 2.3 s\n")) << Out();
  EXPECT_NE(std::string::npos, Out().find(": its previous run goes on\n")) << Out();
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(steps());
  ASSERT_EQ(0, Run({"watch", "--runs", "4", "--json"})) << Err();
  std::istringstream lines(Out());
  Json::List finished;
  for (std::string line; std::getline(lines, line);) {
    if (const Json event = Json::Parse(line); event.At("event") == "finished") {
      finished.push_back(event);
    }
  }
  ASSERT_EQ(4U, finished.size());
  EXPECT_EQ("exit status 1 after 2.3 s", finished[0].At("reason"));
  EXPECT_EQ(1781503200, finished[0].At("startSeconds"));
  EXPECT_EQ(finished[0].At("seconds"), finished[0].At("endSeconds"));
  EXPECT_EQ(Json(), finished[2].At("reason"));
  EXPECT_EQ("Failed", finished[3].At("state")) << "it is not tried again";
  EXPECT_EQ("exit status 4", finished[3].At("reason"));
}

TEST_F(Client, WatchReadsTheAgentsTimesInTheAgentsZone) {
  m_Agent.SetStatus({{"zone", "UTC0"}});
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(
      {{[](FakeAgent& agent) {
          agent.SetTask("T1", {TaskXml(NowTrigger, "2026-06-15 08:00:00 Ok"), true, {}});
        },
        R"({"code":100,"id":"T1"})", 1}});
  EXPECT_EQ(0, Run({"watch", "--runs", "1", "--json"})) << Err();
  const Json started = Json::Parse(Out().substr(0, Out().find('\n')));
  EXPECT_EQ(1781510400, started.At("startSeconds"));
  EXPECT_EQ("2026-06-15 08:00:00 +0000", started.At("time"));
}

TEST_F(Client, WatchOfOneTaskLeavesOutTheOthersAndSaysWhenTheAgentEnds) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps({{{}, R"({"code":102,"id":"T2"})", 0}});
  EXPECT_EQ(3, Run({"watch", "T1"}));
  ExpectError("the agent has ended");
}

TEST_F(Client, WatchAlignsItsLines) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(
      {{[](FakeAgent& agent) {
          agent.SetTask("T1", {TaskXml(NowTrigger, "2026-06-15 08:00:00 Ok"), true, {}});
        },
        R"({"code":100,"id":"T1"})", 1}});
  EXPECT_EQ(0, Run({"watch", "--runs", "1"})) << Err();
  EXPECT_NE(std::string::npos,
            Out().find("  T1                    Ok        started 2026-06-15 08:00:00, took "))
      << Out();
}

TEST_F(Client, WatchEndsNoLineInABlank) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps({{{}, R"({"code":101,"id":"T2"})", 0}});
  EXPECT_EQ(3, Run({"watch"}));
  EXPECT_NE(std::string::npos, Out().find("  T2                    deleted\n")) << Out();
}

}  // namespace NoxAgentTest
