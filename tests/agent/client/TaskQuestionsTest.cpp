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
    SetBackup("Ok");
    m_Agent.SetStatus({{"nextReading", Now + 1200}});
  }

  // It ran this morning at eight; now it is two in the afternoon.
  void SetBackup(const std::string& state, const std::map<std::string, std::string>& run = {}) {
    m_Agent.SetTask("backup", {TaskXml(Daily, "2026-06-15 08:00:02 " + state),
                               true,
                               {{"t3", "1781503202"}, {"t5", "1"}},
                               run});
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
  EXPECT_EQ("/v1/scheduler/INoxTaskScheduler/GetTaskXML", m_Agent.Requests().back().m_Target);
  EXPECT_EQ(Json({{"taskId", "backup"}}), m_Agent.Requests().back().m_Body);
}

TEST_F(TaskQuestions, NextAnswersInJson) {
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1", "--json", "--from", "2026-06-20"})) << Err();
  const Json run = JsonOut().At("runs").At(0);
  EXPECT_EQ("2026-06-20 08:00:00 +0200", run.At("time")) << "it has run until then";
  EXPECT_EQ(false, run.At("late"));
}

TEST_F(TaskQuestions, NextTellsWhenAFailedRunIsTriedAgain) {
  SetBackup("Failed", {{"state", "ended"},
                       {"start", "1781503202"},
                       {"result", "Failed"},
                       {"reason", "exit status 1 after 2.3 s"}});
  ASSERT_EQ(0, Run({"next", "backup", "-n", "2"})) << Err();
  EXPECT_EQ(
      "Its run of 2026-06-15 08:00:02 +0200 failed: exit status 1 after 2.3 s.\n"
      "Its last run, begun at 2026-06-15 08:00:02, has the state \"Failed\", not \"Ok\": when the "
      "scheduler reads its task files next, at 2026-06-15 14:20:00 +0200, the task counts as never "
      "run, and is due then.\n"
      "NEXT RUN                   FROM NOW   DETAILS\n"
      "2026-06-15 14:20:00 +0200  in 20 min  retry, late, never run\n"
      "2026-06-16 08:00:00 +0200  in 18 h\n",
      Out());
  ASSERT_EQ(0, Run({"next", "backup", "--json"})) << Err();
  EXPECT_EQ(true, JsonOut().At("runs").At(0).At("retry"));
  EXPECT_EQ(false, JsonOut().At("runs").At(1).At("retry"));
  EXPECT_EQ("exit status 1 after 2.3 s", JsonOut().At("latestRun").At("reason"));
}

TEST_F(TaskQuestions, NextTellsOfARunUnderWay) {
  SetBackup("Started", {{"state", "running"}, {"start", "1781503203"}, {"pid", "4711"}});
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  EXPECT_EQ(
      "A run is under way since 2026-06-15 08:00:03 +0200, as process 4711.\n"
      "It is taken to end with \"Ok\". If it has not by then, the task counts as never run when "
      "the "
      "scheduler reads its task files next, at 2026-06-15 14:20:00 +0200.\n"
      "NEXT RUN                   FROM NOW  DETAILS\n"
      "2026-06-16 08:00:00 +0200  in 18 h\n",
      Out());
}

TEST_F(TaskQuestions, AnAgentThatDoesNotTellItsReadingMakesItWithinTheHour) {
  m_Agent.SetStatus({});
  SetBackup("Failed");
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut("when the scheduler reads its task files next, within the hour, the task counts");
  ExpectOut("2026-06-15 15:00:00 +0200  in 1 h    retry (at the latest), late, never run");
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut("when the scheduler reads its task files next, within the hour, the task counts");
}

TEST_F(TaskQuestions, ATaskThatTheSchedulerHasNotReadRunsFromTheReadingOn) {
  m_Agent.SetTask("new", {TaskXml(Daily), false, {}});
  ASSERT_EQ(0, Run({"next", "new", "-n", "1"})) << Err();
  EXPECT_EQ(
      "The scheduler has not read the task's file yet; it does at 2026-06-15 14:20:00 +0200.\n"
      "NEXT RUN                   FROM NOW   DETAILS\n"
      "2026-06-15 14:20:00 +0200  in 20 min  late, never run\n",
      Out());
  ASSERT_EQ(0, Run({"explain", "new"})) << Err();
  ExpectOut("has not read the task's file yet; it does at 2026-06-15 14:20:00 +0200, and this is");
  ExpectOut("The task runs");
}

TEST_F(TaskQuestions, NextSaysNeverAndWhy) {
  const auto weekly = [](const char* days) {
    return std::string("<Trigger Type=\"2\"><BeginDate>2026/06/01 08:00:00</BeginDate>") + days +
           "<WeeksInterval>1</WeeksInterval></Trigger>";
  };
  const std::string monthly =
      "<Trigger Type=\"3\"><BeginDate>2026/06/01 08:00:00</BeginDate><DaysOfMonth>1610612736"
      "</DaysOfMonth><MonthsOfYear>2</MonthsOfYear></Trigger>";
  const auto next = [this](const std::string& triggers, const std::string& enabled = "1") {
    const std::string xml = TaskXml(triggers, "2026-06-02 08:00:00 Ok", enabled);
    m_Agent.SetTask("t", {xml, true, {{"t3", "1780380000"}, {"t5", enabled}}});
    EXPECT_EQ(0, Run({"next", "t"})) << Err();
    return Out();
  };
  EXPECT_EQ("never: trigger 1 names no weekday\n", next(weekly("")));
  EXPECT_EQ("never: trigger 1 names no weekday; trigger 2 February never has days 30 and 31\n",
            next(weekly("") + monthly));
  EXPECT_EQ("never: the task is disabled\n", next(Daily, "0"));
  ASSERT_EQ(0, Run({"next", "t", "--json"})) << Err();
  EXPECT_EQ("the task is disabled", JsonOut().At("never"));
  (void)next(weekly(""));
  ASSERT_EQ(0, Run({"explain", "t"})) << Err();
  ExpectOut("nothing is due, and nothing will be: trigger 1 names no weekday.");
}

// In the examples the task comes back in half an hour, in four days or at once.
class DisabledForAWhile : public TaskQuestions {
 protected:
  void SetBackup(long until, const std::string& state = "Ok") {
    m_Agent.SetTask("backup", {TaskXml(Daily, "2026-06-15 08:00:02 " + state, "0"),
                               true,
                               {{"t3", "1781503202"}, {"t5", "0"}},
                               {},
                               {},
                               until});
  }
  static constexpr const char* Note =
      "The task is disabled until 2026-06-19 14:00:00 +0200: until then nothing runs.\n";
  static constexpr long FourDays = Now + 4 * 86400;
};

TEST_F(DisabledForAWhile, NextTellsTheRunsFromItsReturnOn) {
  SetBackup(FourDays);
  ASSERT_EQ(0, Run({"next", "backup", "-n", "2"})) << Err();
  EXPECT_EQ(Note + std::string("NEXT RUN                   FROM NOW     DETAILS\n"
                               "2026-06-19 14:00:00 +0200  in 4 d       late\n"
                               "2026-06-20 08:00:00 +0200  in 4 d 18 h\n"),
            Out())
      << "the start of that morning is made up for";
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1", "--from", "2026-06-20 12:00"})) << Err();
  ExpectOut("2026-06-21 08:00:00 +0200");
  SetBackup(Now + 1800);
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut("2026-06-16 08:00:00 +0200  in 18 h");
  SetBackup(Now - 5);
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut("2026-06-16 08:00:00 +0200  in 18 h");
}

TEST_F(DisabledForAWhile, NextKnowsWhatBecomesOfARunThatFailedBefore) {
  SetBackup(Now + 600, "Failed");
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut("2026-06-15 14:20:00 +0200  in 20 min  retry, late, never run");
  SetBackup(Now + 1800, "Failed");
  ASSERT_EQ(0, Run({"next", "backup", "-n", "2"})) << Err();
  ExpectOut("2026-06-15 14:30:00 +0200  in 30 min  late, never run");
  ExpectOut("2026-06-16 08:00:00 +0200  in 18 h\n");
}

TEST_F(DisabledForAWhile, ATaskThatIsNotReadYetComesBackWhenItIs) {
  m_Agent.SetTask("new", {TaskXml(Daily, "", "0"), false, {}, {}, {}, Now + 600});
  ASSERT_EQ(0, Run({"next", "new", "-n", "1"})) << Err();
  ExpectOut("The task is disabled until 2026-06-15 14:20:00 +0200");
  ExpectOut("2026-06-15 14:20:00 +0200  in 20 min  late, never run");
}

TEST_F(DisabledForAWhile, ExplainTellsUntilWhen) {
  SetBackup(FourDays);
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut("\nThe task is disabled until 2026-06-19 14:00:00 +0200.\n");
  ExpectOut("The task does not run: it is disabled until 2026-06-19 14:00:00 +0200.");
  ASSERT_EQ(0, Run({"explain", "backup", "--at", "2026-06-20 08:00"})) << Err();
  ExpectOut(
      "The task is disabled until 2026-06-19 14:00:00 +0200; at the moment asked about it is "
      "enabled.");
  ExpectOut("The task runs");
}

TEST_F(DisabledForAWhile, DescribeTellsUntilWhen) {
  SetBackup(FourDays);
  ASSERT_EQ(0, Run({"describe", "backup"})) << Err();
  EXPECT_EQ(std::string("daily at 08:00\n") + Note, Out());
}

TEST_F(DisabledForAWhile, TheMomentIsInTheJsonOfEachOfThem) {
  const Json moment = {{"seconds", FourDays}, {"local", "2026-06-19 14:00:00 +0200"}};
  for (const char* const command : {"next", "explain", "describe"}) {
    SetBackup(FourDays);
    ASSERT_EQ(0, Run({command, "backup", "--json"})) << Err();
    EXPECT_EQ(moment, JsonOut().At("returns")) << command;
    TaskQuestions::SetBackup("Ok");
    ASSERT_EQ(0, Run({command, "backup", "--json"})) << Err();
    EXPECT_EQ(Json(), JsonOut().At("returns")) << command;
  }
}

TEST_F(TaskQuestions, TimesAreThoseOfTheAgentsZone) {
  m_Agent.SetStatus({{"zone", "EST5EDT,M3.2.0,M11.1.0"}, {"zoneName", "Boston"}});
  const std::string xml = TaskXml(Daily, "2026-06-15 08:00:02 Ok");
  m_Agent.SetTask("backup", {xml, true, {{"t3", "1781524802"}, {"t5", "1"}}});
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  EXPECT_EQ(
      "Times are those of the agent's zone, Boston.\n"
      "NEXT RUN                   FROM NOW  DETAILS\n"
      "2026-06-16 08:00:00 -0400  in 1 d\n",
      Out());
  ASSERT_EQ(0, Run({"explain", "backup", "--at", "2026-06-16 08:00"})) << Err();
  ExpectOut("Times are those of the agent's zone, Boston.");
  ExpectOut("Task backup at 2026-06-16 08:00:00 -0400");
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1", "--zone", "UTC0"})) << Err();
  ExpectOut("This is told for the zone UTC0; the agent runs its tasks by its own, Boston.");
}

TEST_F(TaskQuestions, AZoneThatIsTheClientsTooIsNoNews) {
  for (const char* const zone : {"CET-1CEST,M3.5.0,M10.5.0/3", ":CET-1CEST,M3.5.0,M10.5.0/3"}) {
    m_Agent.SetStatus({{"zone", zone}, {"zoneName", "Berlin"}});
    ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
    EXPECT_EQ(0U, Out().find("NEXT RUN")) << Out();
  }
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
  ASSERT_EQ(0, Run({"explain", "backup", "--at", "2026-06-18 09:00:00"})) << Err();
  ExpectOut("it runs as planned, the last time at 2026-06-18 08:00:00 +0200");
  ExpectOut("The task does not run: nothing is due");
}

TEST_F(TaskQuestions, ExplainTellsWhatBecomesOfAFailedRunAndWhyItFailed) {
  SetBackup("Failed", {{"state", "ended"},
                       {"start", "1781503202"},
                       {"result", "Failed"},
                       {"reason", "ended by its timeout of 30 s"}});
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut(
      "its state is \"Failed\", not \"Ok\": unless that changes, the task counts as never run from "
      "the next reading of the task files on, at 2026-06-15 14:20:00 +0200, and not before.");
  ExpectOut("Its run of 2026-06-15 08:00:02 +0200 failed: ended by its timeout of 30 s.");
  ExpectOut(
      "The task does not run: nothing is due; when the scheduler reads its task files next, at "
      "2026-06-15 14:20:00 +0200, the task counts as never run, and is due at once.");
  ASSERT_EQ(0, Run({"explain", "backup", "--json"})) << Err();
  EXPECT_EQ(Now + 1200, JsonOut().At("nextRun"));
  EXPECT_EQ(Now + 1200, JsonOut().At("dueByReading"));
  EXPECT_EQ("ended by its timeout of 30 s", JsonOut().At("latestRun").At("reason"));
}

TEST_F(TaskQuestions, TellOfAFailureThatIsNotTriedAgain) {
  SetBackup("Ok", {{"state", "ended"},
                   {"start", "1781503202"},
                   {"end", "1781503203"},
                   {"result", "Failed"},
                   {"final", "1"},
                   {"reason", "exit status 1"}});
  const std::string failure =
      "Its run of 2026-06-15 08:00:02 +0200 failed: exit status 1. It is not tried again: the "
      "scheduler was told that it is finished.";
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut(failure);
  ASSERT_EQ(0, Run({"explain", "backup", "--json"})) << Err();
  EXPECT_EQ("Failed", JsonOut().At("state"));
  EXPECT_EQ(true, JsonOut().At("latestRun").At("final"));
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut(failure + "\nNEXT RUN                   FROM NOW  DETAILS\n2026-06-16 08:00:00 +0200");
}

TEST_F(TaskQuestions, ExplainTellsOfARunUnderWayAndOfStartsLeftOut) {
  SetBackup("Started", {{"state", "running"},
                        {"start", "1781503203"},
                        {"pid", "4711"},
                        {"skipped", "1781510400"},
                        {"skipReason", "its previous run goes on"}});
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut("2026-06-15 14:20:00 +0200. It is taken to end with \"Ok\" before.");
  ExpectOut("A run is under way since 2026-06-15 08:00:03 +0200, as process 4711.");
  ExpectOut("Its start at 2026-06-15 10:00:00 +0200 was left out: its previous run goes on.");
  ExpectOut("the next run is at 2026-06-16 08:00:00 +0200");
}

TEST_F(TaskQuestions, ExplainTellsThatARunCouldNotBeRecorded) {
  m_Agent.SetTask(
      "backup",
      {TaskXml(Daily, "2026-06-14 08:00:02 Ok"), true, {{"t3", "1781503202"}, {"t5", "1"}}});
  ASSERT_EQ(0, Run({"explain", "backup"})) << Err();
  ExpectOut("began at 2026-06-15 08:00:02 +0200, but that could not be written into its file");
  ASSERT_EQ(0, Run({"next", "backup", "-n", "1"})) << Err();
  ExpectOut("2026-06-15 14:20:00 +0200  in 20 min  late\n");
}

TEST_F(TaskQuestions, ExplainTellsThatTheTaskIsGoneByThen) {
  const std::string once =
      "<Trigger Type=\"1\"><BeginDate>2026/06/01 08:00:00</BeginDate>"
      "<EndDate>2026-06-16 00:00:00</EndDate></Trigger>";
  m_Agent.SetTask(
      "backup",
      {TaskXml(once, "2026-06-15 08:00:02 Ok"), true, {{"t3", "1781503202"}, {"t5", "1"}}});
  ASSERT_EQ(0, Run({"explain", "backup", "--at", "2026-06-20"})) << Err();
  ExpectOut("The task does not run: the scheduler deletes it at 2026-06-16 00:");
}

TEST_F(TaskQuestions, ExplainTellsThatAClosedGateHoldsTheTaskBack) {
  m_Agent.SetTask("due", {TaskXml("<Trigger Type=\"-1\"/>"), true, {{"t3", "-1"}, {"t5", "1"}}});
  m_Agent.SetReport(DisabledReport);
  ASSERT_EQ(0, Run({"explain", "due"})) << Err();
  ExpectOut("The task is due, but does not run while the gate is closed");
  m_Agent.SetReport(EnabledReport);
  ASSERT_EQ(0, Run({"explain", "due"})) << Err();
  ExpectOut("The task runs");
}

}  // namespace NoxAgentTest
