// noxctl next and explain about the agent's own tasks; the real nox-simulate answers.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

constexpr const char* Daily =
    "<Trigger Type=\"1\"><BeginDate>2026/06/01 08:00:00</BeginDate><DaysInterval>1</DaysInterval>"
    "</Trigger>";
constexpr const char* EnabledReport = "1 task\nTask processing is enabled.\n";
constexpr const char* DisabledReport = "1 task\nTask processing is disabled.\n";

class TaskQuestions : public Client {
 protected:
  TaskQuestions() {
    m_Agent.SetTask("backup", {TaskXml(Daily, "2026-06-15 08:00:02 Ok"), true, {}});
  }

  void ExpectOut(const std::string& words) const {
    EXPECT_NE(std::string::npos, Out().find(words)) << "\"" << words << "\" in\n" << Out();
  }
};

}  // namespace

TEST_F(TaskQuestions, NextTellsTheComingRunsOfTheAgentsTask) {
  ASSERT_EQ(0, Run({"next", "backup", "-n", "2"})) << Err();
  EXPECT_EQ(
      "NEXT RUN                   FROM NOW     DETAILS\n"
      "2026-06-16 08:00:00 +0200  in 18 h\n"
      "2026-06-17 08:00:00 +0200  in 1 d 18 h\n",
      Out());
  ASSERT_EQ(1U, m_Agent.Requests().size());
  EXPECT_EQ("/v1/scheduler/INoxTaskScheduler/GetTaskXML", m_Agent.Requests()[0].m_Target);
  EXPECT_EQ(Json({{"taskId", "backup"}}), m_Agent.Requests()[0].m_Body);
}

TEST_F(TaskQuestions, NextAnswersInJson) {
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1", "--json", "--from", "2026-06-20"})) << Err();
  const Json run = JsonOut().At("runs").At(0);
  EXPECT_EQ("2026-06-20 00:00:00 +0200", run.At("time")) << "late, for it should have run before";
  EXPECT_EQ(true, run.At("late"));
}

TEST_F(TaskQuestions, AFileOfThatNameGoesBeforeTheAgentsTask) {
  m_Dir.Write("backup.xml", TaskXml(Daily));
  ASSERT_EQ(0, Run({"next", (m_Dir / "backup.xml").string()})) << Err();
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(TaskQuestions, AnUnknownTaskIsAnErrorThatNamesBothPlaces) {
  for (const char* const command : {"next", "explain"}) {
    EXPECT_EQ(1, Run({command, "none"})) << command;
    ExpectError("the agent has no task none, and there is no file of that name");
    EXPECT_EQ(1, Run({command, "a b"})) << command;
    ExpectError("the agent has no task a b");
  }
}

TEST_F(TaskQuestions, ExplainKnowsTheGateFromTheAgent) {
  m_Agent.SetReport(EnabledReport);
  ASSERT_EQ(0, Run({"explain", "backup", "--json"})) << Err();
  EXPECT_EQ("open", JsonOut().At("gate")) << Out();
  m_Agent.SetReport(DisabledReport);
  ASSERT_EQ(0, Run({"explain", "backup", "--json"})) << Err();
  EXPECT_EQ("closed", JsonOut().At("gate")) << Out();
  m_Agent.SetReport("nothing of that kind");
  ASSERT_EQ(0, Run({"explain", "backup", "--json"})) << Err();
  EXPECT_EQ("assumed", JsonOut().At("gate")) << Out();
}

TEST_F(TaskQuestions, ExplainTellsWhyTheTaskDoesNotRunNow) {
  m_Agent.SetReport(EnabledReport);
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut("2026-06-15 08:00:02");
  ExpectOut("2026-06-16 08:00:00 +0200");
}

TEST_F(TaskQuestions, ExplainTellsOfAnotherMoment) {
  m_Agent.SetReport(EnabledReport);
  ASSERT_EQ(0, Run({"explain", "backup", "--at", "2026-06-16 08:00:00"})) << Err();
  ExpectOut("The task runs");
}

TEST_F(TaskQuestions, ExplainTellsThatAClosedGateHoldsTheTaskBack) {
  m_Agent.SetTask("due", {TaskXml("<Trigger Type=\"-1\"/>"), true, {}});
  m_Agent.SetReport(DisabledReport);
  ASSERT_EQ(0, Run({"explain", "due"})) << Err();
  ExpectOut("The task is due, but does not run while the gate is closed");
  m_Agent.SetReport(EnabledReport);
  ASSERT_EQ(0, Run({"explain", "due"})) << Err();
  ExpectOut("The task runs");
}

}  // namespace NoxAgentTest
