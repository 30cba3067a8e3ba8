#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace NoxAgentTest {

namespace {

class AddCommand : public Client {
 protected:
  // Its path.
  std::string File(const std::string& name, const std::string& text = TaskXml(NowTrigger)) {
    m_Dir.Write(name, text);
    return (m_Dir / name).string();
  }
  // Those of one request.
  static std::vector<std::string> IdsOf(const FakeRequest& request) {
    std::vector<std::string> ids;
    for (const Json& task : request.m_Body["tasks"].Items()) {
      ids.push_back(task["taskId"].Text());
    }
    return ids;
  }
  void ExpectNothingSent(const std::string& words) const {
    ExpectError(words);
    EXPECT_TRUE(m_Agent.Requests().empty());
  }
};

using Ids = std::vector<std::string>;

}  // namespace

TEST_F(AddCommand, SendsTheDocumentAndPrintsTheInventedId) {
  EXPECT_EQ(0, Run({"add", FileWith(TaskXml(NowTrigger))})) << Err();
  EXPECT_EQ("corvane_task_1\n", Out());
  ASSERT_EQ(1U, m_Agent.Requests().size());
  const FakeRequest request = m_Agent.Requests()[0];
  EXPECT_EQ("POST", request.m_Method);
  EXPECT_EQ("/v1/tasks/add", request.m_Target);
  EXPECT_EQ(Json({{"tasks", Json::List{{{"taskId", ""}, {"taskXml", TaskXml(NowTrigger)}}}}}),
            request.m_Body);
}

TEST_F(AddCommand, ReadsStandardInputAndTakesAnId) {
  EXPECT_EQ(0, Run({"add", "-", "--id", "T1", "--json"}, TaskXml(NowTrigger))) << Err();
  EXPECT_EQ(Json({{"id", "T1"}}), JsonOut());
}

TEST_F(AddCommand, SendsAsciiAlone) {
  EXPECT_EQ(0, Run({"add", "-"}, TaskXml("<Trigger Type=\"-1\" Description=\"\xC3\xA9\"/>")));
  const std::string sent = m_Agent.Requests()[0].m_Body["tasks"].At(0)["taskXml"].Text();
  EXPECT_NE(std::string::npos, sent.find("\"&#233;\"")) << sent;
}

TEST_F(AddCommand, RefusesWhatNeverRunsUnlessForced) {
  const std::string file = FileWith(TaskXml(DeadTrigger));
  EXPECT_EQ(2, Run({"add", file}));
  ExpectError("type 6 is for events");
  EXPECT_NE(std::string::npos, Err().find("--force"));
  EXPECT_TRUE(m_Agent.Requests().empty());
  EXPECT_EQ(0, Run({"add", file, "--force"})) << Err();
  EXPECT_EQ("/v1/tasks/add?force=1", m_Agent.Requests()[0].m_Target);
}

TEST_F(AddCommand, RefusesBrokenDocumentsEvenWhenForced) {
  EXPECT_EQ(2, Run({"add", "-", "--force"}, "<Task>\n<a></Task>"));
  ExpectError("-: line 2");
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(AddCommand, TellsEachWarningInALine) {
  EXPECT_EQ(0, Run({"add", "-"}, TaskXml(WarnedTrigger)));
  EXPECT_EQ(0U, Err().find("noxctl: warning: -: line 1, column 115: KillAtEnd")) << Err();
  EXPECT_EQ(Err().size() - 1, Err().find('\n')) << Err();
  EXPECT_EQ("corvane_task_1\n", Out());
}

TEST_F(AddCommand, TellsAnUnreadableFile) {
  EXPECT_EQ(2, Run({"add", (m_Dir / "none.xml").string()}));
  ExpectError("No such file");
  EXPECT_EQ(2, Run({"add", m_Dir.Path().string()}));
  ExpectError("cannot read");
}

TEST_F(AddCommand, OfOneFileTellsWhyTheTaskCouldNotBeAdded) {
  m_Agent.FailToAdd("a");
  EXPECT_EQ(1, Run({"add", "-", "--id", "a"}, TaskXml(NowTrigger)));
  ExpectError("noxctl: the agent refuses: the disk is full\n");
  EXPECT_EQ(1, Run({"add", "-", "--id", "a", "--json"}, TaskXml(NowTrigger)));
  EXPECT_EQ("", Out());
  EXPECT_EQ(Json({{"code", "not-written"}, {"message", "the agent refuses: the disk is full"}}),
            Json::Parse(Err()).At("error"));
}

TEST_F(AddCommand, CallsEachOfSeveralTasksAsItsFile) {
  std::filesystem::create_directory(m_Dir / "more");
  const Ids files = {"add", File("b.xml"), File("more/a.vsk"), File("c.d"), File("more/e.xml.vsk")};
  EXPECT_EQ(0, Run(files)) << Err();
  EXPECT_EQ("b\na\nc.d\ne.xml\n", Out());
  ASSERT_EQ(1U, m_Agent.Requests().size());
  EXPECT_EQ("/v1/tasks/add", m_Agent.Requests()[0].m_Target);
  EXPECT_EQ((Ids{"b", "a", "c.d", "e.xml"}), IdsOf(m_Agent.Requests()[0]));
  EXPECT_EQ(TaskXml(NowTrigger), m_Agent.Requests()[0].m_Body["tasks"].At(1)["taskXml"]);
}

TEST_F(AddCommand, AnswersInJsonForSeveral) {
  EXPECT_EQ(0, Run({"add", File("b.xml"), File("a.xml"), "--json"})) << Err();
  EXPECT_EQ(Json({{"added", Json::List{"b", "a"}}}), JsonOut());
}

TEST_F(AddCommand, HasAnIdInventedForStandardInputAmongFiles) {
  EXPECT_EQ(0, Run({"add", File("a.xml"), "-", "--force"}, TaskXml(DeadTrigger))) << Err();
  EXPECT_EQ("a\ncorvane_task_2\n", Out());
  EXPECT_EQ("/v1/tasks/add?force=1", m_Agent.Requests()[0].m_Target);
}

TEST_F(AddCommand, SendsNothingWhenOneDocumentIsBad) {
  const std::string good = File("a.xml", TaskXml(WarnedTrigger));
  EXPECT_EQ(2, Run({"add", good, File("b.xml", "<Task>\n<a></Task>")}));
  ExpectNothingSent((m_Dir / "b.xml").string() + ": line 2");
  EXPECT_EQ(2, Run({"add", good, File("b.xml", TaskXml(DeadTrigger))}));
  ExpectNothingSent((m_Dir / "b.xml").string() + ": line 1");
  EXPECT_EQ(2, Run({"add", good, (m_Dir / "none.xml").string()}));
  ExpectNothingSent("none.xml: No such file");
}

TEST_F(AddCommand, SendsNothingWhenANameIsNoId) {
  const struct {
    const char* m_Name;
    const char* m_Fault;
  } rows[] = {
      {"a b.xml", R"(the ID "a b", which may hold letters)"},
      {".xml", R"(the ID ".xml", which must not begin with a dot)"},
      {"a.vsk.xml", R"(the ID "a.vsk", which must not contain ".vsk")"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(2, Run({"add", File("good.xml"), File(row.m_Name)})) << row.m_Name;
    ExpectNothingSent((m_Dir / row.m_Name).string() + ": its task would have " + row.m_Fault);
    EXPECT_NE(std::string::npos, Err().find("; rename the file, or add it alone with --id"));
  }
  EXPECT_EQ(2, Run({"add", File("good.xml"), File("a b.xml"), "--json"}));
  EXPECT_EQ("bad-task-id", Json::Parse(Err())["error"]["code"]);
  EXPECT_EQ(0, Run({"add", File("a b.xml")})) << "alone it has an ID invented";
}

TEST_F(AddCommand, SendsNothingWhenTwoFilesGiveOneId) {
  EXPECT_EQ(2, Run({"add", File("a.xml"), File("b.xml"), File("a.vsk")}));
  ExpectNothingSent((m_Dir / "a.vsk").string() + ": its task would have the ID a, and so would " +
                    "that of " + (m_Dir / "a.xml").string() + "; rename one of the files");
  EXPECT_EQ(2, Run({"add", "-", File("a.xml"), "-"}, TaskXml(NowTrigger)));
  ExpectNothingSent("standard input is named twice");
}

TEST_F(AddCommand, TakesAnIdForOneFileOnly) {
  EXPECT_EQ(2, Run({"add", File("a.xml"), File("b.xml"), "--id", "c"}));
  ExpectNothingSent(
      "--id is for one FILE; with several, each task is called as its file; see "
      "noxctl add --help");
}

TEST_F(AddCommand, ATaskThatCannotBeAddedDoesNotKeepTheOthersBack) {
  m_Agent.FailToAdd("b");
  const Ids files = {"add", File("a.xml"), File("b.xml"), File("c.xml")};
  EXPECT_EQ(1, Run(files));
  EXPECT_EQ("a\nc\n", Out());
  EXPECT_EQ("noxctl: " + files[2] + ": the agent refuses: the disk is full\n", Err());
  Ids inJson = files;
  inJson.emplace_back("--json");
  EXPECT_EQ(1, Run(inJson));
  EXPECT_EQ(Json({{"added", Json::List{"a", "c"}}}), JsonOut());
  EXPECT_EQ(Json({{"code", "not-written"},
                  {"message", files[2] + ": the agent refuses: the disk is full"},
                  {"id", "b"}}),
            Json::Parse(Err()).At("error"));
}

TEST_F(AddCommand, NamesTheFileWhoseJobIsWrong) {
  m_Agent.AnswerAlways(200, R"({"tasks":[{"taskId":"a","warnings":[]},{"taskId":"b","warnings":[)"
                            R"({"message":"no job","effect":"fails","mend":"write it"}]}]})");
  const std::string file = File("b.xml");
  EXPECT_EQ(0, Run({"add", File("a.xml"), file}));
  EXPECT_EQ("a\nb\n", Out());
  EXPECT_EQ("noxctl: warning: " + file + ": no job; fails; write it\n", Err());
}

TEST_F(AddCommand, NamesTheFileThatTheAgentRefuses) {
  m_Agent.RefuseToAdd("b");
  const Ids files = {"add", File("a.xml"), File("b.xml"), "--json"};
  EXPECT_EQ(2, Run(files));
  EXPECT_EQ(Json({{"added", Json::List{}}}), JsonOut());
  EXPECT_EQ(Json({{"code", "never-runs"},
                  {"message", files[2] + ": the agent refuses: no such handler (line 1, column 7); "
                                         "none of the tasks was added"},
                  {"line", 1},
                  {"column", 7},
                  {"id", "b"}}),
            Json::Parse(Err()).At("error"));
  EXPECT_EQ(2, Run({"add", files[2], "--id", "b"}));
  ExpectError("noxctl: the agent refuses: no such handler (line 1, column 7)\n");
}

TEST_F(AddCommand, SendsAsManyAtOnceAsARequestHasRoomFor) {
  const std::string large(400 * 1024, ' ');
  const std::string huge(1024 * 1024 - 200, ' ');
  const Ids files = {"add",
                     File("a.xml", TaskXml(NowTrigger) + large),
                     File("b.xml", TaskXml(NowTrigger) + large),
                     File("c.xml", TaskXml(NowTrigger) + large),
                     File("d.xml", TaskXml(NowTrigger) + huge),
                     File("e.xml")};
  EXPECT_EQ(0, Run(files)) << Err();
  EXPECT_EQ("a\nb\nc\nd\ne\n", Out());
  const auto requests = m_Agent.Requests();
  ASSERT_EQ(4U, requests.size());
  EXPECT_EQ((Ids{"a", "b"}), IdsOf(requests[0]));
  EXPECT_EQ(TaskXml(NowTrigger) + large, requests[0].m_Body["tasks"].At(1)["taskXml"]);
  EXPECT_LT(requests[0].m_Body.Dump().size(), 1024U * 1024);
  EXPECT_EQ(Ids{"c"}, IdsOf(requests[1]));
  EXPECT_EQ(Ids{"d"}, IdsOf(requests[2])) << "it goes alone";
  EXPECT_EQ(Ids{"e"}, IdsOf(requests[3]));
  EXPECT_EQ(1U, m_Agent.Connections());
}

TEST_F(AddCommand, TellsWhatWasAddedBeforeARefusal) {
  Ids files = {"add"};
  for (int number = 0; number < 201; ++number) {
    files.push_back(File(std::to_string(number) + ".xml"));
  }
  m_Agent.RefuseToAdd("200");
  EXPECT_EQ(2, Run(files));
  EXPECT_EQ(2U, m_Agent.Requests().size()) << "so many at once take no longer than they may";
  const std::string added = Out();
  EXPECT_EQ(200, std::count(added.begin(), added.end(), '\n')) << added;
  EXPECT_NE(std::string::npos, Err().find(files.back() + ": the agent refuses")) << Err();
  EXPECT_NE(std::string::npos, Err().find("; only the tasks told of were added")) << Err();
}

TEST_F(AddCommand, TellsWhatWasAddedBeforeTheAgentWentAway) {
  m_Agent.EndAfter("/v1/tasks/add");
  const std::string large(600 * 1024, ' ');
  EXPECT_EQ(3, Run({"add", File("a.xml", TaskXml(NowTrigger) + large),
                    File("b.xml", TaskXml(NowTrigger) + large), "--json"}));
  EXPECT_EQ(Json({{"added", Json::List{"a"}}}), JsonOut());
  EXPECT_EQ("unreachable", Json::Parse(Err()).At("error").At("code"));
}

TEST_F(AddCommand, AnAnswerWithoutItsTasksCannotBeRead) {
  for (const char* const body : {"{}", R"({"tasks":[]})", R"({"tasks":[{}]})"}) {
    m_Agent.AnswerAlways(200, body);
    EXPECT_EQ(1, Run({"add", "-"}, TaskXml(NowTrigger))) << body;
    ExpectError("an answer cannot be read");
  }
  m_Agent.AnswerAlways(422, R"({"error":{"code":"never-runs","message":"no","index":7}})");
  EXPECT_EQ(2, Run({"add", "-"}, TaskXml(NowTrigger)));
  ExpectError("the agent refuses: no");
}

}  // namespace NoxAgentTest
