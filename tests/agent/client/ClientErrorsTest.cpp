// How noxctl fails: what it says, and how it ends.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace NoxAgentTest {

TEST_F(Client, RefusedIdsAreBadUsage) {
  EXPECT_EQ(2, Run({"delete", "a b"}));
  ExpectError("a blank");
  EXPECT_EQ(1, Run({"show", "a b"}));
  ExpectError("there is no task a b");
}

TEST_F(Client, EmptyPathsAreRefusedWhereverTheyStand) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"--socket", "", "list"},
                                                                     {"--socket=", "list"},
                                                                     {"list", "--socket", ""},
                                                                     {"--runtime-dir", "", "list"},
                                                                     {"list", "--runtime-dir="}}) {
    EXPECT_EQ(2, RunAsGiven(arguments)) << testing::PrintToString(arguments);
    ExpectError(": the path is empty");
  }
}

TEST_F(Client, AnAnswerThatCannotBeWrittenIsAnError) {
  std::ofstream full("/dev/full");
  std::istringstream in;
  std::ostringstream errors;
  EXPECT_EQ(1, NoxAgent::RunClient({"--version"}, in, full, errors));
  EXPECT_EQ("noxctl: the answer could not be written; see that there is room for it\n",
            errors.str());
}

TEST_F(Client, CommandsOnUnknownTasksFailAndSayWhereToLook) {
  for (const char* command : {"show", "delete", "enable", "disable", "attributes"}) {
    EXPECT_EQ(1, Run({command, "none"})) << command;
    ExpectError("noxctl list shows the tasks");
  }
  EXPECT_EQ(1, Run({"set-state", "none", "Ok"}));
  ExpectError("noxctl list shows the tasks");
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
    EXPECT_EQ(Json(Json::List{"a", "b"}), JsonOut().At(row.m_Done));
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
  const std::size_t second = Err().find('\n') + 1;
  EXPECT_EQ("a", Json::Parse(Err().substr(0, second)).At("warning").At("id")) << "its job is there";
  EXPECT_EQ("unreachable", Json::Parse(Err().substr(second)).At("error").At("code"));
}

TEST_F(Client, WhatWasDoneIsToldWhenAnAnswerCannotBeRead) {
  m_Agent.SetTask("a", {TaskXml(NowTrigger), true, {}});
  m_Agent.AnswerNothingFor("b");
  EXPECT_EQ(1, Run({"delete", "a", "b"}));
  EXPECT_EQ("deleted a\n", Out());
  EXPECT_NE(std::string::npos, Err().find("an answer cannot be read")) << Err();
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

}  // namespace NoxAgentTest
