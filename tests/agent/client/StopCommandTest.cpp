// How noxctl stop has runs end, and waits for that.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

class StopCommand : public Client {
 protected:
  StopCommand() {
    for (const char* const id : {"backup", "report"}) {
      m_Agent.SetTask(id, {TaskXml(NowTrigger), true, {}, Running("3")});
    }
    m_Agent.SetTask("idle", {TaskXml(NowTrigger), true, {}});
  }

  static std::map<std::string, std::string> Running(const std::string& number) {
    return {{"state", "running"},
            {"number", number},
            {"runs", number},
            {"start", "1781524800"},
            {"pid", "77"}};
  }

  /// The operations of the handler that were asked for, in their order.
  std::vector<std::string> Asked() const {
    std::vector<std::string> operations;
    for (const FakeRequest& request : m_Agent.Requests()) {
      operations.push_back(request.m_Target.substr(request.m_Target.rfind('/') + 1));
    }
    return operations;
  }
};

}  // namespace

TEST_F(StopCommand, WaitsUntilTheRunHasEnded) {
  m_Agent.SetLooksUntilEnd(2);
  EXPECT_EQ(0, Run({"stop", "backup"})) << Err();
  EXPECT_EQ("stopped backup\n", Out());
  EXPECT_EQ((std::vector<std::string>{"GetRun", "StopRun", "GetRun", "GetRun", "GetRun"}), Asked());
}

TEST_F(StopCommand, AsksForAllEndsBeforeItWaits) {
  EXPECT_EQ(0, Run({"stop", "backup", "report"})) << Err();
  EXPECT_EQ("stopped backup\nstopped report\n", Out());
  EXPECT_EQ(
      (std::vector<std::string>{"GetRun", "StopRun", "GetRun", "StopRun", "GetRun", "GetRun"}),
      Asked());
}

TEST_F(StopCommand, FailsForATaskThatDoesNotRunAndGoesOn) {
  EXPECT_EQ(1, Run({"stop", "idle", "backup", "none", "--json"}));
  EXPECT_EQ(Json({{"stopped", Json::List{"backup"}}}), JsonOut());
  EXPECT_NE(std::string::npos, Err().find("no run of the task idle is under way")) << Err();
  EXPECT_NE(std::string::npos, Err().find("no run of the task none is under way")) << Err();
}

TEST_F(StopCommand, DoesNotWaitForARunThatBeginsAfterThatOne) {
  m_Agent.SetRunAfterStop(Running("4"));
  EXPECT_EQ(0, Run({"stop", "backup"})) << Err();
  EXPECT_EQ("stopped backup\n", Out());
}

}  // namespace NoxAgentTest
