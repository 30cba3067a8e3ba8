// Whole runs of noxctl against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace NoxAgentTest {

TEST_F(Client, ShowPrintsTheDocument) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {{"t0", "T1"}}});
  EXPECT_EQ(0, Run({"show", "T1"}));
  EXPECT_EQ(TaskXml(NowTrigger) + "\n", Out());
  EXPECT_EQ(0, Run({"show", "T1", "--json"}));
  EXPECT_EQ("T1", JsonOut()["attributes"]["t0"]);
}

TEST_F(Client, DeleteDeletesEachOfItsTasks) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetTask("b", {TaskXml(NowTrigger), true, {}});
  EXPECT_EQ(0, Run({"delete", "a", "b"}));
  EXPECT_EQ("deleted a\ndeleted b\n", Out());
  EXPECT_EQ(1, Run({"show", "a"}));
}

TEST_F(Client, EnableTakesATaskThatIsEnabledAlready) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {{"t5", "0"}}});
  EXPECT_EQ(0, Run({"enable", "a"})) << Err();
  EXPECT_EQ(0, Run({"enable", "a"})) << Err();
  EXPECT_EQ("enabled a\n", Out());
  EXPECT_EQ(0, Run({"disable", "a", "--json"})) << Err();
  EXPECT_EQ(Json({{"disabled", Json::List{"a"}}, {"until", Json()}}), JsonOut());
}

TEST_F(Client, AttributesNamesTheKeys) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger),
                         true,
                         {{"t0", "T1"},
                          {"t2", "1"},
                          {"t3", "-1"},
                          {"t6", "1781589600"},
                          {"td0", "Nightly"},
                          {"tr0", "1781589600"}}});
  EXPECT_EQ(0, Run({"attributes", "T1"}));
  EXPECT_EQ(
      "KEY  MEANING                VALUE\n"
      "t0   task ID                T1\n"
      "t2   late                   yes\n"
      "t3   last run               never\n"
      "t6   next run               2026-06-16 08:00:00 +0200\n"
      "td0  trigger 0              Nightly\n"
      "tr0  next run of trigger 0  2026-06-16 08:00:00 +0200\n",
      Out());
}

TEST_F(Client, SetStateHandsTheWordOver) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  EXPECT_EQ(0, Run({"set-state", "T1", "Failed"}));
  EXPECT_EQ(Json({{"taskId", "T1"}, {"runState", "Failed"}}), m_Agent.Requests()[0].m_Body);
}

TEST_F(Client, StatusTellsPeopleHowTheAgentAndItsPluginsAre) {
  m_Agent.AnswerAlways(200, R"({"version":"0.1.0","pid":42,"startTime":1781524790,"uptime":10,
    "config":"","stateDir":"/s","socket":"/s/run/control.sock","requests":7,"errors":1,
    "connections":1,"streams":2,"droppedStreams":0,"enumerations":3,"notifications":4,"zoneName":"Europe/Berlin",
    "plugins":[{"name":"scheduler","path":"/lib/S.so","config":"/etc/s.ini","requests":5,"errors":0,
      "report":"Currently running tasks:\n T1\n\n\nTask processing is enabled.\n"}]})");
  EXPECT_EQ(0, Run({"status"}));
  EXPECT_EQ(
      "noxagentd 0.1.0, process 42, up 10 s since 2026-06-15 13:59:50 +0200\n"
      "configuration  built-in defaults\n"
      "state          /s\n"
      "socket         /s/run/control.sock\n"
      "requests       7, 1 of them with an error\n"
      "open           connections 1, streams 2 (0 dropped so far), enumerations 3\n"
      "notifications  4\n"
      "time zone      Europe/Berlin\n"
      "\n"
      "plug-in scheduler: /lib/S.so\n"
      "  configuration  /etc/s.ini\n"
      "  requests       5, 0 of them with an error\n"
      "  Currently running tasks:\n"
      "   T1\n"
      "  Task processing is enabled.\n",
      Out());
}

TEST_F(Client, StatusShowsWhatTheAgentLeavesOutAsADash) {
  EXPECT_EQ(0, Run({"status"}));
  EXPECT_NE(std::string::npos, Out().find("noxagentd 0.1.0, process -, up")) << Out();
  EXPECT_EQ(0, Run({"status", "--json"}));
  EXPECT_EQ("scheduler", JsonOut().At("plugins").At(0).At("name"));
}

TEST_F(Client, RefreshAndNotifyReachTheAgent) {
  EXPECT_EQ(0, Run({"refresh"}));
  EXPECT_EQ(0, Run({"notify", "10", "300", "power"}));
  EXPECT_EQ(0, Run({"notify", "0", "--json"}));
  const auto requests = m_Agent.Requests();
  ASSERT_EQ(3U, requests.size());
  EXPECT_EQ("/v1/refresh", requests[0].m_Target);
  EXPECT_EQ("/v1/notify", requests[1].m_Target);
  EXPECT_EQ(Json({{"kind", 10}, {"code", 300}, {"text", "power"}}), requests[1].m_Body);
  EXPECT_EQ(Json({{"kind", 0}, {"code", 0}, {"text", ""}}), requests[2].m_Body);
}

TEST_F(Client, CheckEndsWithTheGreatestSeverity) {
  const std::string file = FileWith(TaskXml(NowTrigger));
  EXPECT_EQ(0, Run({"check", file}));
  EXPECT_EQ("", Out());
  EXPECT_EQ(1, Run({"check", file, "-"}, TaskXml(WarnedTrigger)));
  EXPECT_NE(std::string::npos, Out().find("-:1:115: warning: KillAtEnd")) << Out();
  EXPECT_EQ(2, Run({"check", file, "-"}, TaskXml(DeadTrigger)));
  EXPECT_NE(std::string::npos, Out().find("never runs: type 6")) << Out();
  EXPECT_EQ(2, Run({"check", "-"}, "<Task"));
  EXPECT_NE(std::string::npos, Out().find("error: not well-formed")) << Out();
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(Client, CheckJudgesTheYearsAheadByTheChosenZone) {
  const std::string late =
      TaskXml("<Trigger Type=\"1\"><BeginDate>2035/01/01 23:30:00</BeginDate></Trigger>");
  EXPECT_EQ(0, Run({"check", "-", "--zone", "UTC0"}, late)) << Out();
  EXPECT_EQ(1, Run({"check", "-", "--zone", "EST5EDT,M3.2.0,M11.1.0"}, late));
  EXPECT_NE(std::string::npos, Out().find("start of 2035-03-11 23:30:00")) << Out();
  EXPECT_EQ(1, Run({"check", "-", "--zone", "CET-1CEST,M3.5.0,M10.5.0/3"}, late));
  EXPECT_NE(std::string::npos, Out().find("start of 2035-03-25 23:30:00")) << Out();
  EXPECT_EQ(2, Run({"check", "-", "--zone", "Nowhere"}, late));
}

TEST_F(Client, CheckAnswersInJsonFileByFile) {
  EXPECT_EQ(1,
            Run({"check", "--json", FileWith(TaskXml(NowTrigger)), "-"}, TaskXml(WarnedTrigger)));
  EXPECT_EQ(Json::List{}, JsonOut().At(0).At("problems"));
  const Json problem = JsonOut().At(1).At("problems").At(0);
  EXPECT_EQ("warning", problem.At("severity"));
  EXPECT_EQ(115, problem.At("column"));
  EXPECT_EQ("it is read as 0, and the run is not stopped", problem.At("effect"));
}

TEST_F(Client, CheckOfADocumentBeyondTheSizeSaysSo) {
  EXPECT_EQ(2, Run({"check", "-"}, std::string(1024 * 1024 + 5, ' ')));
  EXPECT_NE(std::string::npos, Out().find("more than 1048576")) << Out();
}

TEST_F(Client, HelpOfACommandTellsItsOwnExitStatus) {
  EXPECT_EQ(0, RunAsGiven({"check", "--help"}));
  EXPECT_NE(std::string::npos, Out().find("Exit status: 0 no problems")) << Out();
  EXPECT_EQ(0, RunAsGiven({"list", "--help"}));
  EXPECT_EQ(std::string::npos, Out().find("no problems")) << Out();
}

TEST_F(Client, HelpAndVersionAreNoErrors) {
  EXPECT_EQ(0, RunAsGiven({"--help"}));
  EXPECT_NE(std::string::npos, Out().find("Exit status"));
  EXPECT_EQ(0, RunAsGiven({"--version"}));
  EXPECT_EQ(0U, Out().rfind("noxctl 0.", 0)) << Out();
}

TEST_F(Client, RefreshTellsWhatWaitsForTheNextStart) {
  m_Agent.AnswerAlways(
      200, R"({"result":1,"notInEffect":[{"setting":"[Log] files","old":"5","new":"7"}]})");
  EXPECT_EQ(0, Run({"refresh"})) << Err();
  EXPECT_EQ("refresh done\ntakes effect at the next start: [Log] files from \"5\" to \"7\"\n",
            Out());
  EXPECT_EQ(0, Run({"refresh", "--json"})) << Err();
  EXPECT_EQ("7", JsonOut().At("notInEffect").At(0).At("new"));
}

TEST_F(Client, StatusCountsTasksAndTellsZoneAndNextReading) {
  m_Agent.AnswerAlways(200, R"({"zoneName":"Europe/Berlin","tasks":{"loaded":10018},)"
                            R"("nextReading":1781528400,"refusedFiles":2,"plugins":[],)"
                            R"("taskFiles":{"written":2000,"flushes":6,"journalBytes":4711}})");
  EXPECT_EQ(0, Run({"status"})) << Err();
  EXPECT_NE(std::string::npos,
            Out().find("time zone      Europe/Berlin\n"
                       "tasks          10018 loaded, their files are read again by "
                       "2026-06-15 15:00:00 +0200\n"
                       "task files     written 2000 times with 6 flushes to the disk\n"
                       "refused files  2; noxctl files tells more\n"))
      << Out();
  EXPECT_EQ("/v1/status", m_Agent.Requests()[0].m_Target);
  EXPECT_EQ(0, Run({"status", "--tasks"})) << Err();
  EXPECT_EQ("/v1/status?tasks=1", m_Agent.Requests()[1].m_Target);
}

TEST_F(Client, FilesListsWhatIsNoTask) {
  m_Agent.AnswerAlways(
      200, R"({"refused":[{"name":"a.vsk","reason":"","mended":true,"time":1781503200},)"
           R"({"name":"b.vsk","reason":"not well formed","line":3,"column":7,"mended":false,)"
           R"("time":1781503200}],"strays":[{"name":"notes.txt","reason":"no task"}]})");
  EXPECT_EQ(0, Run({"files"})) << Err();
  EXPECT_EQ(
      "FILE       WHERE    SINCE                      WHAT IS WRONG\n"
      "a.vsk      refused  2026-06-15 08:00:00 +0200  nothing any more: take it back\n"
      "b.vsk      refused  2026-06-15 08:00:00 +0200  line 3, column 7: not well formed\n"
      "notes.txt  tasks    -                          no task\n",
      Out());
  EXPECT_EQ("/v1/files", m_Agent.Requests()[0].m_Target);
}

TEST_F(Client, FilesTakesBackAndRemoves) {
  m_Agent.AnswerAlways(200, R"({"result":1,"out":{"newTaskId":"a"}})");
  EXPECT_EQ(0, Run({"files", "--take-back", "a.vsk.1", "--remove", "b.vsk", "--remove-stray",
                    "notes.txt"}))
      << Err();
  EXPECT_EQ("added a\nremoved b.vsk\nremoved notes.txt\n", Out());
  const auto requests = m_Agent.Requests();
  ASSERT_EQ(3U, requests.size());
  EXPECT_EQ("/v1/files/take-back", requests[0].m_Target);
  EXPECT_EQ(Json({{"name", "a.vsk.1"}}), requests[0].m_Body);
  EXPECT_EQ(Json({{"name", "b.vsk"}, {"from", "refused"}}), requests[1].m_Body);
  EXPECT_EQ(Json({{"name", "notes.txt"}, {"from", "tasks"}}), requests[2].m_Body);
}

// Whoever adds a command tells the manual as well; the shells ask noxctl itself.
TEST_F(Client, CommandsStandInTheManual) {
  const auto read = [](const char* path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  };
  std::string manual = read(NOX_MANUAL);
  manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
  ASSERT_EQ(0, RunAsGiven({"--help"}));
  const std::string help = Out().substr(Out().find("Subcommands:\n") + 13);
  std::istringstream lines(help);
  unsigned commands = 0;
  for (std::string line; std::getline(lines, line) && !line.empty(); ++commands) {
    std::string name;
    std::istringstream(line) >> name;
    const bool inManual = manual.find(".B " + name + "\n") != std::string::npos ||
                          manual.find(".BR " + name + " ") != std::string::npos ||
                          manual.find(".BI " + name + " ") != std::string::npos;
    EXPECT_TRUE(inManual) << name;
  }
  EXPECT_GE(commands, 13U) << help;
}

}  // namespace NoxAgentTest
