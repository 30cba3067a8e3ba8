// noxctl list against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

TEST_F(Client, ListAlignsTasksWithTheirRunsInLocalTime) {
  m_Agent.SetTask("backup", {TaskXml(NowTrigger, "2026-06-15 08:00:00 Ok"),
                             true,
                             {{"t2", "0"}, {"t3", "1781503200"}, {"t6", "1781589600"}}});
  m_Agent.SetTask("due", {TaskXml(NowTrigger, "2026-01-15 08:00:00 Failed"),
                          true,
                          {{"t2", "1"}, {"t3", "-1"}, {"t6", "1781524800"}}});
  m_Agent.SetTask("fresh", {TaskXml(NowTrigger, "", "0"), false, {}});
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_EQ(
      "ID      ENABLED  STATE   LAST RUN                   NEXT RUN                   LATE\n"
      "backup  yes      Ok      2026-06-15 08:00:00 +0200  2026-06-16 08:00:00 +0200  no\n"
      "due     yes      Failed  2026-01-15 08:00:00 +0100  due                        yes\n"
      "fresh   no       -       never                      not loaded yet             no\n",
      Out());
}

// A full disk: the scheduler knows of a run that the file does not.
TEST_F(Client, ListDoesNotPassAnOldStateForThatOfARunWithoutRecord) {
  m_Agent.SetTask("backup", {TaskXml(NowTrigger, "2026-06-14 08:00:00 Ok"),
                             true,
                             {{"t3", "1781503200"}, {"t6", "1781589600"}}});
  m_Agent.SetTask("first", {TaskXml(NowTrigger), true, {{"t3", "1781503200"}}});
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_EQ(
      "ID      ENABLED  STATE    LAST RUN                   NEXT RUN                   LATE\n"
      "backup  yes      unknown  2026-06-15 08:00:00 +0200  2026-06-16 08:00:00 +0200  no\n"
      "first   yes      unknown  2026-06-15 08:00:00 +0200  -                          no\n",
      Out());
  EXPECT_EQ(0U,
            Err().find("noxctl: warning: the last run of the task backup could not be written"));
  EXPECT_EQ(0, Run({"list", "--json"})) << Err();
  EXPECT_EQ(Json(), JsonOut().At(0).At("state"));
  EXPECT_EQ(false, JsonOut().At(0).At("recorded"));
  EXPECT_EQ("backup", Json::Parse(Err().substr(0, Err().find('\n'))).At("warning").At("id"));
}

TEST_F(Client, ListTakesTheDocumentsTimesForTheAgentsZone) {
  m_Agent.SetStatus({{"zone", "UTC0"}});
  m_Agent.SetTask("a",
                  {TaskXml(NowTrigger, "2026-06-15 06:00:00 Ok"), true, {{"t3", "1781503200"}}});
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_NE(std::string::npos, Out().find("Ok     2026-06-15 06:00:00 +0000")) << Out();
  EXPECT_EQ("", Err());
}

// The document tells the start that was left out as the run, with the state of the run before.
TEST_F(Client, ListTellsTheLastRealRunWhenAStartWasLeftOut) {
  m_Agent.SetTask("long", {TaskXml(NowTrigger, "2026-06-15 08:00:00 Started"),
                           true,
                           {{"t3", "1781503200"}},
                           {{"state", "running"},
                            {"start", "1781499600"},
                            {"skipped", "1781503200"},
                            {"skipReason", "its previous run goes on"}}});
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_NE(std::string::npos, Out().find("Started  2026-06-15 07:00:00 +0200")) << Out();
}

TEST_F(Client, ListTellsAFailureThatIsNotTriedAgain) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger, "2026-06-15 08:00:00 Ok"),
                        true,
                        {{"t3", "1781503200"}},
                        {{"state", "ended"},
                         {"start", "1781503200"},
                         {"end", "1781503203"},
                         {"result", "Failed"},
                         {"final", "1"},
                         {"reason", "exit status 1"}}});
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_NE(std::string::npos, Out().find("Failed  2026-06-15 08:00:00 +0200")) << Out();
}

TEST_F(Client, ListPointsToTheFilesThatAreNoTasks) {
  const Json blank = {{"name", "a b.vsk"}, {"reason", "a blank"}};
  m_Agent.SetFiles({{"strays", Json::List{blank}}, {"refused", Json::List{}}});
  EXPECT_EQ(0, Run({"list"}));
  EXPECT_EQ("noxctl: warning: the file a b.vsk (a blank) is no task; see noxctl files\n", Err());
  EXPECT_EQ("ID  ENABLED  STATE  LAST RUN  NEXT RUN  LATE\n", Out());
  const Json mended = {{"name", "c.vsk"}, {"reason", ""}};
  m_Agent.SetFiles({{"strays", Json::List{blank}}, {"refused", Json::List{mended}}});
  EXPECT_EQ(0, Run({"list", "--json"}));
  EXPECT_EQ(
      Json({{"files", Json::List{"a b.vsk", "c.vsk"}},
            {"message", "2 files are no tasks, such as a b.vsk (a blank); see noxctl files"}}),
      Json::Parse(Err()).At("warning"));
}

// The work of an answer for ten thousand tasks is done once, not once for each.
TEST_F(Client, ListAsksForAllTasksAtOnce) {
  for (int number = 0; number < 100; ++number) {
    m_Agent.SetTask("T" + std::to_string(number), {TaskXml(NowTrigger), true, {}});
  }
  EXPECT_EQ(0, Run({"list", "--json"})) << Err();
  EXPECT_EQ(100U, JsonOut().Items().size());
  EXPECT_EQ(Json(), JsonOut().At(0).At("nextRun"));
  EXPECT_EQ(m_Agent.Requests().size(), 3U) << "status, tasks, files";
}

TEST_F(Client, ListThatBreaksOffIsAnErrorAndNoShorterList) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetLastLine(R"({"error":{"code":"queue-closed","message":"it is being unloaded"}})");
  EXPECT_EQ(1, Run({"list"}));
  EXPECT_EQ("", Out());
  ExpectError("the agent breaks off: it is being unloaded");
}

// As the agent does after some requests, or when it has many clients.
TEST_F(Client, ListLosesNothingWhenTheAgentClosesItsConnections) {
  for (int number = 0; number < 40; ++number) {
    m_Agent.SetTask("T" + std::to_string(number), {TaskXml(NowTrigger), true, {}});
  }
  for (const unsigned count : {1U, 2U, 1000U}) {
    m_Agent.SetRequestsPerConnection(count);
    EXPECT_EQ(0, Run({"list", "--json"})) << Err();
    EXPECT_EQ(40U, JsonOut().Items().size()) << count;
  }
}

TEST_F(Client, ListOfNothingIsItsHeadingsOrAnEmptyArray) {
  EXPECT_EQ(0, Run({"list"}));
  EXPECT_EQ("ID  ENABLED  STATE  LAST RUN  NEXT RUN  LATE\n", Out());
  EXPECT_EQ(0, Run({"list", "--json"}));
  EXPECT_EQ("[]\n", Out());
}

}  // namespace NoxAgentTest
