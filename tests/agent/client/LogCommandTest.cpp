// noxctl log against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

constexpr const char* GetOutput = "/v1/command/INoxCommandHandler/GetOutput";

FakeTask TaskWithOutput(std::vector<std::string> parts) {
  return {TaskXml(NowTrigger), true, {}, {}, std::move(parts)};
}

}  // namespace

TEST_F(Client, LogPrintsAllThatIsKept) {
  m_Agent.SetTask("T1", TaskWithOutput({"one\ntw", "o\n", "gr\xC3\xBC\xC3\x9F Gott"}));
  EXPECT_EQ(0, Run({"log", "T1"})) << Err();
  EXPECT_EQ("one\ntwo\ngr\xC3\xBC\xC3\x9F Gott", Out());
  EXPECT_EQ(0, Run({"log", "T1", "--json"})) << Err();
  EXPECT_EQ((Json{{"id", "T1"}, {"output", "one\ntwo\ngr\xC3\xBC\xC3\x9F Gott"}}), JsonOut());
}

TEST_F(Client, LogSaysThatThereIsNoTaskOrNoOutput) {
  EXPECT_EQ(1, Run({"log", "T1"}));
  ExpectError("there is no task T1");
  EXPECT_EQ(1, Run({"log", "-f", "T1"}));
  ExpectError("there is no task T1");
  m_Agent.SetTask("T1", TaskWithOutput({}));
  EXPECT_EQ(1, Run({"log", "T1"}));
  ExpectError("no run of the task T1 has put out anything");
}

TEST_F(Client, LogFollowsUntilTheAgentEnds) {
  m_Agent.SetTask("T1", TaskWithOutput({"one\n", "two\n"}));
  m_Agent.EndAfter(GetOutput, 5);
  EXPECT_EQ(3, Run({"log", "-f", "T1"}));
  EXPECT_EQ("one\ntwo\n", Out());
  EXPECT_GE(VirtualTime::VirtualClock::Instance().Now(), Now + 2) << "between two looks it waits";
}

TEST_F(Client, LogFollowsATaskThatHasPutOutNothingYet) {
  m_Agent.SetTask("T1", TaskWithOutput({}));
  VirtualTime::VirtualClock::Instance().At(
      Now + 2, [this] { m_Agent.SetTask("T1", TaskWithOutput({"first\n"})); });
  m_Agent.EndAfter(GetOutput, 6);
  EXPECT_EQ(3, Run({"log", "--follow", "T1", "--json"}));
  EXPECT_EQ((Json{{"id", "T1"}, {"output", "first\n"}}), JsonOut());
}

}  // namespace NoxAgentTest
