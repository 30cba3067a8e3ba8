#include "agent/daemon/control/TaskBorder.h"

#include "tests/agent/daemon/TestAgent.h"

#include <gtest/gtest.h>

using BaseSDK::AString;
namespace NoxAgent {
namespace {

// A handler's class identifier, begin date and anything else of a daily task.
std::string Document(const std::string& handler = TestAgent::ClassId,
                     const std::string& date = "2035/01/01 08:00:00",
                     const std::string& more = {}) {
  return "<Task>\n<HandlerCLSID>" + handler +
         "</HandlerCLSID>\n<Schedule><Trigger Type=\"1\"><BeginDate>" + date + "</BeginDate>" +
         "<DaysInterval>1</DaysInterval>" + more + "</Trigger></Schedule>\n</Task>";
}

class TaskBorderTest : public testing::Test {
 protected:
  TaskBorderTest() {
    m_Agent.Add("one", "task_file_extension=.vsk\n");
    m_Agent.Add("minimal", "", "MinimalPlugin");
    m_Agent.Load();
  }
  Json Add(const std::string& document, const std::string& query = {}) {
    const Json arguments = {{"taskId", "t"}, {"taskXml", document}};
    return Json::Parse(
        m_Agent.Ask("POST", "/v1/one/INoxTaskScheduler/AddTask" + query, arguments.Dump()).m_Body);
  }
  std::string Stored() {
    return m_Agent.Call("GetTaskXML", {{"taskId", "t"}}).At("out").At("taskXml").Text();
  }
  bool IsStored() { return m_Agent.Call("GetTaskXML", {{"taskId", "t"}})["result"] == 1; }

  TestAgent m_Agent;
};

TEST_F(TaskBorderTest, RefusesTaskIdsThatAreNone) {
  const struct {
    std::string m_TaskId;
    const char* m_Code;
  } rows[] = {
      {"a", ""},
      {"Az09-._~", ""},
      {std::string(200, 'x'), ""},
      {std::string(201, 'x'), "bad-task-id"},
      {"", "bad-task-id"},
      {".hidden", "bad-task-id"},
      {"..", "bad-task-id"},
      {"../../etc/passwd", "bad-task-id"},
      {"a/b", "bad-task-id"},
      {"a b", "bad-task-id"},
      {"a:b", "bad-task-id"},
      {"a;b", "bad-task-id"},
      {"a%2Fb", "bad-task-id"},
      {"a\\b", "bad-task-id"},
      {"\xC3\xA9", "bad-task-id"},
      {std::string("a\0b", 3), "bad-task-id"},
      {"a\n", "bad-task-id"},
      {"a.vsk", "bad-task-id"},
      {"a.vsk.b", "bad-task-id"},
      {"a.VSK", ""},
  };
  for (const auto& row : rows) {
    for (const char* const operation : {"DeleteTask", "GetTaskXML", "GetTaskAttributes"}) {
      EXPECT_EQ(m_Agent.CallError(operation, {{"taskId", row.m_TaskId}}), row.m_Code)
          << operation << " " << row.m_TaskId;
    }
    EXPECT_EQ(
        m_Agent.CallError("EnableTask", {{"taskIds", "good:" + row.m_TaskId}, {"enable", true}}),
        row.m_TaskId == "a:b" ? "" : row.m_Code)
        << row.m_TaskId;
    EXPECT_EQ(m_Agent.CallError("SetRunState", {{"taskId", row.m_TaskId}, {"runState", "Ok"}}),
              row.m_Code)
        << row.m_TaskId;
  }
  EXPECT_EQ(m_Agent.CallError("EnableTask", {{"taskIds", ""}, {"enable", true}}), "bad-task-id");
}

TEST_F(TaskBorderTest, AnEmptyIdHasOneInvented) {
  const Json answer = m_Agent.Call("AddTask", {{"taskId", ""}, {"taskXml", Document()}});
  EXPECT_EQ(answer["out"]["newTaskId"], "invented") << answer;
}

TEST_F(TaskBorderTest, RefusesRunStatesThatAreNotOneWord) {
  for (const char* const good : {"Ok", "Failed", "exit-3", "a.b_c"}) {
    EXPECT_EQ(m_Agent.CallError("SetRunState", {{"taskId", "t"}, {"runState", good}}), "") << good;
  }
  for (const std::string& bad :
       {std::string(), std::string("two words"), std::string("<b/>"), std::string("a&b"),
        std::string("a\"b"), std::string("tab\t"), std::string("\xC3\xA9"), std::string(65, 'x'),
        std::string("a\0", 2)}) {
    EXPECT_EQ(m_Agent.CallError("SetRunState", {{"taskId", "t"}, {"runState", bad}}),
              "bad-run-state")
        << bad;
  }
}

TEST_F(TaskBorderTest, TellsWhereADocumentIsNotWellFormed) {
  const Json answer = Add("<Task>\n  <Schedule>\n</Task>");
  EXPECT_EQ(answer["error"]["code"], "bad-document") << answer;
  EXPECT_EQ(answer["error"]["line"], 3) << answer;
  EXPECT_FALSE(IsStored());
}

TEST_F(TaskBorderTest, RefusesDocumentsThatAreNone) {
  for (const std::string& bad :
       {std::string(), std::string("text"), std::string("<Other/>"),
        std::string("<Task>\x01</Task>"),
        Document(TestAgent::ClassId, "2035/01/01 08:00:00",
                 "<Description>" + std::string(1024 * 1024, 'x') + "</Description>")}) {
    EXPECT_EQ(Add(bad)["error"]["code"], "bad-document") << bad.substr(0, 60);
    EXPECT_EQ(Add(bad, "?force=1")["error"]["code"], "bad-document") << bad.substr(0, 60);
  }
  EXPECT_FALSE(IsStored());
}

TEST_F(TaskBorderTest, WritesWhatIsNotAsciiAsReferences) {
  const std::string description = "<Description>caf\xC3\xA9 \xF0\x9F\x98\x80</Description>";
  const Json answer = Add(Document(TestAgent::ClassId, "2035/01/01 08:00:00", description));
  EXPECT_EQ(answer["result"], 1) << answer;
  const std::string stored = Stored();
  EXPECT_NE(stored.find("caf&#"), std::string::npos) << stored;
  for (const char character : stored) {
    EXPECT_GE(character, '\0');
  }
}

TEST_F(TaskBorderTest, RefusesWhatIsNotAsciiWhereThereAreNoReferences) {
  const std::string document = Document();
  for (const std::string& part :
       {std::string("<!-- \xC3\xA9 -->"), std::string("<x><![CDATA[\xC3\xA9]]></x>"),
        std::string("<?p \xC3\xA9?>"), std::string("<\xC3\xA9/>")}) {
    std::string bad = document;
    bad.insert(bad.find("<Schedule>"), part);
    const Json answer = Add(bad);
    EXPECT_EQ(answer.At("error").At("code").Text(), "bad-document") << part << answer;
    EXPECT_EQ(answer.At("error").At("line"), 3) << part << answer;
  }
  EXPECT_FALSE(IsStored());
}

TEST_F(TaskBorderTest, RefusesWhatWouldNeverRunUnlessForced) {
  const struct {
    const char* m_Why;
    std::string m_Document;
  } rows[] = {
      {"no trigger", "<Task><HandlerCLSID>" + std::string(TestAgent::ClassId) +
                         "</HandlerCLSID><Schedule/></Task>"},
      {"unknown type", "<Task><HandlerCLSID>" + std::string(TestAgent::ClassId) +
                           "</HandlerCLSID><Schedule><Trigger Type=\"9\"/></Schedule></Task>"},
      {"no date", Document(TestAgent::ClassId, "tomorrow")},
      {"ended", Document(TestAgent::ClassId, "2001/01/01 08:00:00",
                         "<EndDate>2001/02/01 08:00:00</EndDate>")},
      {"no handler", Document("")},
      {"unknown handler", Document("{AAAAAAAA-0000-0000-0000-00000000000F}")},
      {"not an identifier", Document("commands")},
      {"no runner of tasks", Document("{AAAAAAAA-0000-0000-0000-000000000002}")},
  };
  for (const auto& row : rows) {
    const Json answer = Add(row.m_Document);
    EXPECT_EQ(answer.At("error").At("code").Text(), "never-runs") << row.m_Why << answer;
    EXPECT_FALSE(IsStored()) << row.m_Why;
  }
  for (const auto& row : rows) {
    EXPECT_EQ(Add(row.m_Document, "?force=1")["result"], 1) << row.m_Why;
    EXPECT_EQ(Stored(), row.m_Document) << row.m_Why;
  }
}

TEST_F(TaskBorderTest, NamesThePlaceOfAHandlerThatIsNotThere) {
  const Json answer = Add(Document("{AAAAAAAA-0000-0000-0000-00000000000F}"));
  EXPECT_EQ(answer["error"]["line"], 2) << answer;
  EXPECT_EQ(answer["error"]["column"], 1) << answer;
}

TEST_F(TaskBorderTest, PassesWhatIsMerelyOddAndSaysSo) {
  const Json answer = Add(Document(TestAgent::ClassId, "2035/01/01 08:00:00", "<Odd>1</Odd>"));
  EXPECT_EQ(answer["result"], 1) << answer;
  ASSERT_TRUE(answer.Has("warnings")) << answer;
  EXPECT_EQ(answer["warnings"].At(0)["line"], 3) << answer;
  EXPECT_EQ(answer.At("warnings").At(0).At("message").Text().empty(), false);
  EXPECT_FALSE(Add(Document()).Has("warnings"));
}

}  // namespace
}  // namespace NoxAgent
