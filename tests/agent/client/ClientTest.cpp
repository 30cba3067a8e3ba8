// Whole runs of noxctl against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>

namespace NoxAgentTest {

namespace {

constexpr const char* NowTrigger = "<Trigger Type=\"-1\"/>";
constexpr const char* DeadTrigger = "<Trigger Type=\"6\"/>";
constexpr const char* WarnedTrigger = "<Trigger Type=\"-1\" KillAtEnd=\"yes\"/>";

}  // namespace

TEST_F(Client, AddSendsTheDocumentAndPrintsTheInventedId) {
  EXPECT_EQ(0, Run({"add", FileWith(TaskXml(NowTrigger))})) << Err();
  EXPECT_EQ("corvane_task_1\n", Out());
  ASSERT_EQ(1U, m_Agent.Requests().size());
  const FakeRequest request = m_Agent.Requests()[0];
  EXPECT_EQ("POST", request.m_Method);
  EXPECT_EQ("/v1/scheduler/INoxTaskScheduler/AddTask", request.m_Target);
  EXPECT_EQ(Json({{"taskId", ""}, {"taskXml", TaskXml(NowTrigger)}}), request.m_Body);
}

TEST_F(Client, AddReadsStandardInputAndTakesAnId) {
  EXPECT_EQ(0, Run({"add", "-", "--id", "T1", "--json"}, TaskXml(NowTrigger))) << Err();
  EXPECT_EQ(Json({{"id", "T1"}}), JsonOut());
}

TEST_F(Client, AddSendsAsciiAlone) {
  EXPECT_EQ(0, Run({"add", "-"}, TaskXml("<Trigger Type=\"-1\" Description=\"\xC3\xA9\"/>")));
  const std::string sent = m_Agent.Requests()[0].m_Body["taskXml"].Text();
  EXPECT_NE(std::string::npos, sent.find("\"&#233;\"")) << sent;
}

TEST_F(Client, AddRefusesWhatNeverRunsUnlessForced) {
  const std::string file = FileWith(TaskXml(DeadTrigger));
  EXPECT_EQ(2, Run({"add", file}));
  ExpectError("type 6 is for events");
  EXPECT_NE(std::string::npos, Err().find("--force"));
  EXPECT_TRUE(m_Agent.Requests().empty());
  EXPECT_EQ(0, Run({"add", file, "--force"})) << Err();
  EXPECT_EQ("/v1/scheduler/INoxTaskScheduler/AddTask?force=1", m_Agent.Requests()[0].m_Target);
}

TEST_F(Client, AddRefusesBrokenDocumentsEvenWhenForced) {
  EXPECT_EQ(2, Run({"add", "-", "--force"}, "<Task>\n<a></Task>"));
  ExpectError("-: line 2");
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(Client, AddTellsEachWarningInALine) {
  EXPECT_EQ(0, Run({"add", "-"}, TaskXml(WarnedTrigger)));
  EXPECT_EQ(0U, Err().find("noxctl: warning: -: line 1, column 115: KillAtEnd")) << Err();
  EXPECT_EQ(Err().size() - 1, Err().find('\n')) << Err();
  EXPECT_EQ("corvane_task_1\n", Out());
}

TEST_F(Client, AddTellsAnUnreadableFile) {
  EXPECT_EQ(2, Run({"add", (m_Dir / "none.xml").string()}));
  ExpectError("No such file");
  EXPECT_EQ(2, Run({"add", m_Dir.Path().string()}));
  ExpectError("cannot read");
}

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

TEST_F(Client, ListPointsToTheFilesThatAreNoTasks) {
  m_Agent.SetFiles({{"strays", Json::List{Json{{"name", "a b.vsk"}, {"reason", "a blank"}}}},
                    {"refused", Json::List{Json{{"name", "c.vsk"}, {"reason", "it is empty"}}}}});
  EXPECT_EQ(0, Run({"list"}));
  EXPECT_EQ(
      "noxctl: warning: the file a b.vsk is no task: a blank; see noxctl files\n"
      "noxctl: warning: the file c.vsk is no task: it is empty; see noxctl files\n",
      Err());
  EXPECT_EQ("ID  ENABLED  STATE  LAST RUN  NEXT RUN  LATE\n", Out());
  EXPECT_EQ(0, Run({"list", "--json"}));
  EXPECT_EQ("a b.vsk", Json::Parse(Err().substr(0, Err().find('\n'))).At("warning").At("file"));
}

TEST_F(Client, ListClosesItsEnumeration) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  EXPECT_EQ(0, Run({"list", "--json"}));
  EXPECT_EQ("a", JsonOut().At(0).At("id"));
  EXPECT_EQ(Json(), JsonOut().At(0).At("nextRun"));
  unsigned closed = 0;
  for (const FakeRequest& request : m_Agent.Requests()) {
    if (request.m_Target.find("FindClose") != std::string::npos) {
      ++closed;
      EXPECT_EQ("a1b2c3", request.m_Body["handle"]);
    }
  }
  EXPECT_EQ(1U, closed);
}

// As the agent does when the task directory cannot be read.
TEST_F(Client, ListOfAnEnumerationThatWasNotOpenedIsEmpty) {
  m_Agent.AnswerAlways(200, R"({"result":-1,"out":{"handle":0,"taskId":""}})");
  EXPECT_EQ(0, Run({"list", "--json"})) << Err();
  EXPECT_EQ("[]\n", Out());
  for (const FakeRequest& request : m_Agent.Requests()) {
    EXPECT_EQ(std::string::npos, request.m_Target.find("FindClose")) << "nothing is open";
  }
}

TEST_F(Client, ListAsksAllOnOneConnection) {
  for (int number = 0; number < 100; ++number) {
    m_Agent.SetTask("T" + std::to_string(number), {TaskXml(NowTrigger), true, {}});
  }
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::seconds ReuseTime(2);
  std::size_t connections = 0;
  bool isSlow = true;
  // Another one is right when the machine stalls: it might be closed already.
  for (int attempt = 0; attempt < 10 && connections != 1 && isSlow; ++attempt) {
    const std::size_t before = m_Agent.Connections();
    const auto begin = Clock::now();
    EXPECT_EQ(0, Run({"list", "--json"})) << Err();
    EXPECT_EQ(100U, JsonOut().Items().size());
    connections = m_Agent.Connections() - before;
    isSlow = Clock::now() - begin >= ReuseTime;
  }
  EXPECT_EQ(1U, connections);
}

// As the agent does after some requests, or when it has many clients.
TEST_F(Client, ListLosesNothingWhenTheAgentClosesItsConnections) {
  for (int number = 0; number < 40; ++number) {
    m_Agent.SetTask("T" + std::to_string(number), {TaskXml(NowTrigger), true, {}});
  }
  for (const unsigned count : {1U, 2U, 31U, 32U, 33U}) {
    m_Agent.SetRequestsPerConnection(count);
    EXPECT_EQ(0, Run({"list", "--json"})) << Err();
    EXPECT_EQ(40U, JsonOut().Items().size()) << count;
  }
}

TEST_F(Client, ListLeavesOutFilesThatAreNoTasks) {
  m_Agent.SetTask("a b", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetTask("c", {TaskXml(NowTrigger), true, {}});
  EXPECT_EQ(0, Run({"list", "--json"})) << Err();
  ASSERT_EQ(1U, JsonOut().Items().size());
  EXPECT_EQ("c", JsonOut().At(0).At("id"));
}

TEST_F(Client, RefusedIdsAreBadUsage) {
  EXPECT_EQ(2, Run({"delete", "a b"}));
  ExpectError("a blank");
  EXPECT_EQ(1, Run({"show", "a b"}));
  ExpectError("there is no task a b");
}

TEST_F(Client, ListOfNothingIsItsHeadingsOrAnEmptyArray) {
  EXPECT_EQ(0, Run({"list"}));
  EXPECT_EQ("ID  ENABLED  STATE  LAST RUN  NEXT RUN  LATE\n", Out());
  EXPECT_EQ(0, Run({"list", "--json"}));
  EXPECT_EQ("[]\n", Out());
}

TEST_F(Client, ShowPrintsTheDocument) {
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {{"t0", "T1"}}});
  EXPECT_EQ(0, Run({"show", "T1"}));
  EXPECT_EQ(TaskXml(NowTrigger) + "\n", Out());
  EXPECT_EQ(0, Run({"show", "T1", "--json"}));
  EXPECT_EQ("T1", JsonOut()["attributes"]["t0"]);
}

TEST_F(Client, CommandsOnUnknownTasksFailAndSayWhereToLook) {
  for (const char* command : {"show", "delete", "enable", "disable", "attributes"}) {
    EXPECT_EQ(1, Run({command, "none"})) << command;
    ExpectError("noxctl list shows the tasks");
  }
  EXPECT_EQ(1, Run({"set-state", "none", "Ok"}));
  ExpectError("noxctl list shows the tasks");
}

TEST_F(Client, DeleteDeletesEachOfItsTasks) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetTask("b", {TaskXml(NowTrigger), true, {}});
  EXPECT_EQ(0, Run({"delete", "a", "b"}));
  EXPECT_EQ("deleted a\ndeleted b\n", Out());
  EXPECT_EQ(1, Run({"show", "a"}));
}

TEST_F(Client, AMissingTaskDoesNotKeepTheOthersFromBeingDone) {
  const struct {
    const char* m_Command;
    const char* m_Done;
  } rows[] = {{"delete", "deleted"}, {"enable", "enabled"}, {"disable", "disabled"}};
  const auto setTasks = [this] {
    m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
    m_Agent.SetTask("b", {TaskXml(NowTrigger), true, {}});
  };
  for (const auto& row : rows) {
    setTasks();
    EXPECT_EQ(1, Run({row.m_Command, "a", "none", "b"})) << row.m_Command;
    EXPECT_EQ(row.m_Done + std::string(" a\n") + row.m_Done + " b\n", Out());
    EXPECT_EQ(Err().size() - 1, Err().find('\n')) << Err();
    EXPECT_NE(std::string::npos, Err().find("task none; noxctl list shows the tasks")) << Err();
    setTasks();
    EXPECT_EQ(2, Run({row.m_Command, "a", "none", "bad id", "b", "--json"})) << row.m_Command;
    EXPECT_EQ(Json({{row.m_Done, Json::List{"a", "b"}}}), JsonOut());
    const std::size_t end = Err().find('\n');
    const Json missing = Json::Parse(Err().substr(0, end)).At("error");
    EXPECT_EQ("none", missing.At("id"));
    EXPECT_EQ("failed", missing.At("code"));
    const Json bad = Json::Parse(Err().substr(end)).At("error");
    EXPECT_EQ("bad id", bad.At("id"));
    EXPECT_EQ("bad-task-id", bad.At("code"));
  }
}

TEST_F(Client, WhatWasDoneIsToldWhenTheAgentGoesAway) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  m_Agent.EndAfter("/v1/scheduler/INoxTaskScheduler/DeleteTask");
  EXPECT_EQ(3, Run({"delete", "a", "b", "--json"}));
  EXPECT_EQ(Json({{"deleted", Json::List{"a"}}}), JsonOut());
  EXPECT_EQ("unreachable", Json::Parse(Err()).At("error").At("code"));
}

TEST_F(Client, ErrorsAreJsonWhenTheAnswerIs) {
  const auto error = [this] {
    EXPECT_EQ("", Out());
    EXPECT_EQ(Err().size() - 1, Err().find('\n')) << Err();
    return Json::Parse(Err()).At("error");
  };
  EXPECT_EQ(1, Run({"show", "none", "--json"}));
  EXPECT_EQ("failed", error().At("code"));
  EXPECT_EQ("there is no task none; noxctl list shows the tasks", error().At("message"));
  EXPECT_EQ(2, Run({"fly", "--json"}));
  EXPECT_EQ("usage", error().At("code"));
  EXPECT_EQ(3, RunAsGiven({"status", "--json", "--socket", "/none"}));
  EXPECT_EQ("unreachable", error().At("code"));
  EXPECT_EQ(2, Run({"add", "-", "--json"}, "<Task>\n<a></Task>"));
  EXPECT_EQ("bad-document", error().At("code"));
  EXPECT_EQ(2, error().At("line"));
  EXPECT_EQ(2, Run({"add", "-", "--json"}, TaskXml(DeadTrigger)));
  EXPECT_EQ("never-runs", error().At("code"));
  m_Agent.AnswerAlways(
      422, R"({"error":{"code":"bad-document","message":"no Task","line":3,"column":7}})");
  EXPECT_EQ(2, Run({"add", "-", "--json"}, TaskXml(NowTrigger)));
  EXPECT_EQ(Json({{"code", "bad-document"},
                  {"message", "the agent refuses: no Task (line 3, column 7)"},
                  {"line", 3},
                  {"column", 7}}),
            error());
}

TEST_F(Client, WarningsAreJsonWhenTheAnswerIs) {
  EXPECT_EQ(0, Run({"add", "-", "--json"}, TaskXml(WarnedTrigger)));
  const Json warning = Json::Parse(Err()).At("warning");
  EXPECT_EQ(115, warning.At("column"));
  EXPECT_EQ(0U, warning.At("message").Text().find("-: line 1, column 115: KillAtEnd")) << Err();
}

TEST_F(Client, EnableTakesATaskThatIsEnabledAlready) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {{"t5", "0"}}});
  EXPECT_EQ(0, Run({"enable", "a"})) << Err();
  EXPECT_EQ(0, Run({"enable", "a"})) << Err();
  EXPECT_EQ("enabled a\n", Out());
  EXPECT_EQ(0, Run({"disable", "a", "--json"})) << Err();
  EXPECT_EQ(Json({{"disabled", Json::List{"a"}}}), JsonOut());
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
    "connections":1,"streams":2,"droppedStreams":0,"enumerations":3,"notifications":4,
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
        {setRun("2026-06-15 10:00:00 Failed", {}), changed, 2}};
  };
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(steps());
  ASSERT_EQ(0, Run({"watch", "--runs", "3"})) << Err();
  EXPECT_NE(std::string::npos, Out().find(": exit status 1 after 2.3 s\n")) << Out();
  EXPECT_NE(std::string::npos, Out().find(": its previous run goes on\n")) << Out();
  m_Agent.SetTask("T1", {TaskXml(NowTrigger), true, {}});
  m_Agent.SetSteps(steps());
  ASSERT_EQ(0, Run({"watch", "--runs", "3", "--json"})) << Err();
  std::istringstream lines(Out());
  Json::List finished;
  for (std::string line; std::getline(lines, line);) {
    if (const Json event = Json::Parse(line); event.At("event") == "finished") {
      finished.push_back(event);
    }
  }
  ASSERT_EQ(3U, finished.size());
  EXPECT_EQ("exit status 1 after 2.3 s", finished[0].At("reason"));
  EXPECT_EQ(1781503200, finished[0].At("startSeconds"));
  EXPECT_EQ(finished[0].At("seconds"), finished[0].At("endSeconds"));
  EXPECT_EQ(Json(), finished[2].At("reason"));
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

TEST_F(Client, PassesOnTheAgentsRefusalWithItsPlace) {
  m_Agent.AnswerAlways(
      422, R"({"error":{"code":"bad-document","message":"no Task","line":3,"column":7}})");
  EXPECT_EQ(2, Run({"add", "-"}, TaskXml(NowTrigger)));
  ExpectError("the agent refuses: no Task (line 3, column 7)");
  m_Agent.AnswerAlways(503, R"({"error":{"code":"too-many-connections","message":"later"}})");
  EXPECT_EQ(1, Run({"status"}));
  ExpectError("the agent refuses: later");
}

struct BadAnswerRow {
  unsigned m_Status;
  const char* m_Body;
  const char* m_Expected;
};

TEST_F(Client, TellsAnswersThatItCannotRead) {
  const BadAnswerRow rows[] = {
      {500, "oops", "HTTP status 500"},
      {503, R"({"error":"x"})", "HTTP status 503"},
      {200, "no json", "cannot be read"},
      {200, "{}", "cannot be read"},
      {200, "[]", "cannot be read"},
      {200, R"({"result":"1"})", "cannot be read"},
      {200, R"({"result":1})", "cannot be read"},
      {200, R"({"result":1,"out":3})", "cannot be read"},
      {200, R"({"result":1,"out":{"taskXml":3}})", "cannot be read"},
  };
  for (const BadAnswerRow& row : rows) {
    m_Agent.AnswerAlways(row.m_Status, row.m_Body);
    EXPECT_EQ(1, Run({"show", "T1"})) << row.m_Body;
    ExpectError(row.m_Expected);
  }
  m_Agent.AnswerAlways(403, R"({"error":{"message":"not for you"}})");
  EXPECT_EQ(1, Run({"watch"}));
  ExpectError("not for you");
}

TEST_F(Client, TellsAConnectionThatBreaks) {
  for (const char* raw :
       {"", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{", "nonsense\r\n\r\n"}) {
    m_Agent.AnswerRaw(raw);
    EXPECT_EQ(3, Run({"status"})) << raw;
    ExpectError("cannot read from the agent");
  }
}

TEST_F(Client, EndsWith3WhenNoAgentListens) {
  EXPECT_EQ(3, RunAsGiven({"list", "--runtime-dir", m_Dir.Path().string()}));
  ExpectError("control.sock: No such file or directory; see that noxagentd runs");
}

TEST_F(Client, EndsWith2OnBadUsageInOneLine) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"fly"},
                                             {"show"},
                                             {"list", "--fast"},
                                             {"notify", "ten"},
                                             {"add"},
                                             {"watch", "--runs", "-1"}}) {
    EXPECT_EQ(2, RunAsGiven(arguments)) << testing::PrintToString(arguments);
    ExpectError("; see noxctl ");
    ExpectError("--help");
  }
  EXPECT_EQ(2, RunAsGiven({"status", "--socket", std::string(200, 'x')}));
  ExpectError("too long");
}

TEST_F(Client, BadUsageNamesWhatIsUnknownAndTheHelpThatKnows) {
  EXPECT_EQ(2, RunAsGiven({"fly"}));
  ExpectError("there is no command or option \"fly\"; see noxctl --help");
  EXPECT_EQ(2, RunAsGiven({"show"}));
  ExpectError("ID is required; see noxctl show --help");
}

TEST_F(Client, ANotificationOfAnUnknownKindIsBadUsage) {
  for (const char* const kind : {"3", "8", "9", "11", "300"}) {
    EXPECT_EQ(2, Run({"notify", kind}));
    ExpectError("there is no notification of kind " + std::string(kind) +
                "; the kinds are 0 start-up finished, 1 and 2 policy refresh");
  }
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(Client, AnEventWithoutItsCodeIsBadUsage) {
  EXPECT_EQ(2, Run({"notify", "10"}));
  ExpectError("has a CODE");
  EXPECT_TRUE(m_Agent.Requests().empty());
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
