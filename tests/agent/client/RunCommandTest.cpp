// What noxctl run tells of what became of the run.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

using RunTexts = std::map<std::string, std::string>;

class RunCommand : public Client {
 protected:
  RunCommand() { m_Agent.SetTask("backup", {TaskXml(NowTrigger), true, {}, Ended("Ok", "1")}); }

  static RunTexts Ended(const std::string& result, const std::string& number) {
    return {{"state", "ended"},
            {"start", "1781524800"},
            {"end", "1781524802"},
            {"result", result},
            {"reason", "exit status 1 after 2.3 s"},
            {"number", number},
            {"runs", number}};
  }

  /// The exit status of `noxctl run backup` when that became of it.
  int Become(const RunTexts& run) {
    m_Agent.SetRunByHand(run);
    return Run({"run", "backup"});
  }
};

}  // namespace

TEST_F(RunCommand, TellsThatARunHasStarted) {
  EXPECT_EQ(0,
            Become({{"state", "running"}, {"number", "2"}, {"runs", "2"}, {"start", "1781524801"}}))
      << Err();
  EXPECT_EQ("backup: started\n", Out());
}

TEST_F(RunCommand, TellsWhatARunWaitsFor) {
  EXPECT_EQ(
      0,
      Become({{"state", "waiting"}, {"number", "2"}, {"runs", "2"}, {"reason", "200 runs go on"}}))
      << Err();
  EXPECT_EQ("backup: waits to be started: 200 runs go on\n", Out());
  EXPECT_EQ(
      0, Become({{"state", "running"}, {"number", "1"}, {"runs", "1"}, {"queued", "1781524802"}}));
  EXPECT_EQ("backup: waits for the end of the run that goes on\n", Out());
}

TEST_F(RunCommand, FailsWithARunThatWasLeftOut) {
  RunTexts run{{"state", "running"},
               {"number", "1"},
               {"runs", "1"},
               {"skipped", "1781524802"},
               {"skipReason", "its previous run goes on"},
               {"skips", "1"}};
  EXPECT_EQ(1, Become(run));
  EXPECT_EQ("backup: left out: its previous run goes on\n", Out());
  run["skips"] = "2";
  EXPECT_EQ(1, Become(run)) << "another one in the same second";
  EXPECT_EQ("backup: left out: its previous run goes on\n", Out());
}

TEST_F(RunCommand, DoesNotTakeAStartThatWasLeftOutDuringTheRunForItsOwn) {
  RunTexts run = Ended("Ok", "2");
  run["skipped"] = "1781524801";
  run["skipReason"] = "its previous run goes on";
  run["skips"] = "1";
  m_Agent.SetRunByHand(run);
  EXPECT_EQ(0, Run({"run", "backup", "--wait"})) << Err();
  EXPECT_EQ("backup: Ok, exit status 1 after 2.3 s\n", Out());
}

TEST_F(RunCommand, TellsOfARunThatIsOverBesideOneThatGoesOn) {
  EXPECT_EQ(0, Become({{"state", "running"}, {"number", "1"}, {"runs", "2"}})) << Err();
  EXPECT_EQ("backup: started\n", Out());
}

TEST_F(RunCommand, TellsARunFromAnotherOfTheSameSecond) {
  EXPECT_EQ(1, Become(Ended("Failed", "2")));
  EXPECT_EQ("backup: Failed, exit status 1 after 2.3 s\n", Out());
}

TEST_F(RunCommand, RefusesATaskThatIsNotThere) {
  EXPECT_EQ(1, Run({"run", "none"}));
  ExpectError("there is no task none; noxctl list shows the tasks");
}

}  // namespace NoxAgentTest
