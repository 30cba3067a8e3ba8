#include "agent/daemon/control/FilesRoute.h"

#include "tests/agent/daemon/TestAgent.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace NoxAgent {
namespace {

class FilesRouteTest : public testing::Test {
 protected:
  FilesRouteTest() {
    m_Agent.AddScheduler().Add("handler");
    std::filesystem::create_directories(m_Agent.m_Dir / "state/var/refused");
  }

  void Refuse(const std::string& name, const std::string& bytes) const {
    m_Agent.m_Dir.Write("state/var/refused/" + name, bytes);
  }
  bool IsRefused(const std::string& name) const {
    return m_Agent.m_Dir.Has("state/var/refused/" + name);
  }
  void PutTask(const std::string& name, const std::string& bytes) const {
    m_Agent.m_Dir.Write("state/tasks/" + name, bytes);
  }
  bool HasTask(const std::string& name) const { return m_Agent.m_Dir.Has("state/tasks/" + name); }
  Json List() { return Json::Parse(m_Agent.Ask("GET", "/v1/files").m_Body); }
  // Its error's code; empty when there is none.
  std::string Post(const std::string& target, const Json& body) {
    m_Answer = Json::Parse(m_Agent.Ask("POST", "/v1/files/" + target, body.Dump()).m_Body);
    return m_Answer.Has("error") ? m_Answer["error"]["code"].Text() : std::string();
  }
  std::string Remove(const std::string& name, const std::string& from) {
    return Post("remove", {{"name", name}, {"from", from}});
  }

  TestAgent m_Agent;
  Json m_Answer;
};

TEST_F(FilesRouteTest, ListsRefusedDocumentsWithTheirPlaces) {
  m_Agent.Load();
  Refuse("b.vsk", "<Task>\n</Tusk>");
  Refuse("a.vsk", TestAgent::DailyTask);
  const Json refused = List()["refused"];
  ASSERT_EQ(refused.Items().size(), 2U);
  EXPECT_EQ(refused.At(0)["name"], "a.vsk");
  EXPECT_EQ(refused.At(0)["mended"], true);
  EXPECT_EQ(refused.At(0)["reason"], "");
  EXPECT_EQ(refused.At(1)["name"], "b.vsk");
  EXPECT_EQ(refused.At(1)["mended"], false);
  EXPECT_NE(refused.At(1)["reason"], "");
  EXPECT_EQ(refused.At(1)["line"], 2);
  EXPECT_TRUE(refused.At(1).Has("column"));
  struct stat info {};
  ASSERT_EQ(::stat((m_Agent.m_Dir / "state/var/refused/b.vsk").c_str(), &info), 0);
  EXPECT_EQ(refused.At(1)["time"], static_cast<long>(info.st_ctime));
}

TEST_F(FilesRouteTest, ListsWhatIsNoTask) {
  PutTask("good.vsk", TestAgent::DailyTask);
  PutTask("notes.txt", "");
  PutTask("twice.vsk.vsk", TestAgent::DailyTask);
  PutTask(".hidden", "");
  std::filesystem::create_directory(m_Agent.m_Dir / "state/tasks/folder.vsk");
  m_Agent.Load();
  EXPECT_EQ(
      List()["strays"],
      (Json::List{{{"name", "folder.vsk"}, {"reason", "it is a directory"}},
                  {{"name", "notes.txt"}, {"reason", "its name does not end in .vsk"}},
                  {{"name", "twice.vsk.vsk"}, {"reason", "its name has more than one .vsk"}}}));
}

TEST_F(FilesRouteTest, TakesAMendedDocumentBackAsATask) {
  m_Agent.Load();
  Refuse("a.vsk.1", TestAgent::DailyTask);
  EXPECT_EQ(Post("take-back", {{"name", "a.vsk.1"}}), "") << m_Answer;
  EXPECT_EQ(m_Answer["out"]["newTaskId"], "a");
  EXPECT_FALSE(IsRefused("a.vsk.1"));
  EXPECT_TRUE(HasTask("a.vsk"));
  EXPECT_EQ(m_Agent.Call("GetTaskAttributes", {{"taskId", "a"}}, "scheduler")["result"], 1)
      << "the scheduler holds it";
}

TEST_F(FilesRouteTest, TakesNothingBackThatWouldBeLost) {
  m_Agent.Load();
  Refuse("bad.vsk", "<Task>\n</Tusk>");
  EXPECT_EQ(Post("take-back", {{"name", "bad.vsk"}}), "bad-document");
  EXPECT_EQ(m_Answer["error"]["line"], 2);
  Refuse("ended.vsk", "<Task><Trigger/></Task>");
  EXPECT_EQ(Post("take-back", {{"name", "ended.vsk"}}), "never-runs") << "as if it were added";
  PutTask("there.vsk", TestAgent::DailyTask);
  Refuse("there.vsk", TestAgent::DailyTask);
  EXPECT_EQ(Post("take-back", {{"name", "there.vsk"}}), "task-exists");
  for (const char* const name : {"bad.vsk", "ended.vsk", "there.vsk"}) {
    EXPECT_TRUE(IsRefused(name)) << name;
  }
  EXPECT_FALSE(HasTask("bad.vsk"));
  EXPECT_EQ(Post("take-back", {{"name", "none.vsk"}}), "unknown-file");
}

TEST_F(FilesRouteTest, RemovesRefusedDocumentsAndWhatIsNoTask) {
  PutTask("good.vsk", TestAgent::DailyTask);
  PutTask("notes.txt", "");
  m_Agent.Load();
  Refuse("a.vsk", "bad");
  EXPECT_EQ(Remove("a.vsk", "refused"), "") << m_Answer;
  EXPECT_FALSE(IsRefused("a.vsk"));
  EXPECT_EQ(Remove("a.vsk", "refused"), "unknown-file");
  EXPECT_EQ(Remove("notes.txt", "tasks"), "") << m_Answer;
  EXPECT_FALSE(HasTask("notes.txt"));
  EXPECT_EQ(Remove("good.vsk", "tasks"), "is-a-task");
  EXPECT_TRUE(HasTask("good.vsk"));
  EXPECT_EQ(Remove("none", "tasks"), "unknown-file");
  EXPECT_EQ(Remove("a.vsk", "elsewhere"), "mistyped-argument");
  for (const char* const name : {"", ".", "..", "../tasks/good.vsk", "a/b"}) {
    EXPECT_EQ(Remove(name, "refused"), "bad-file-name") << name;
  }
}

TEST_F(FilesRouteTest, AnAgentWithoutASchedulerHasNoFiles) {
  TestAgent agent;
  agent.Add("one").Load();
  EXPECT_EQ(Json::Parse(agent.Ask("GET", "/v1/files").m_Body),
            (Json{{"refused", Json::List{}}, {"strays", Json::List{}}}));
  EXPECT_EQ(agent.Ask("POST", "/v1/files/take-back", R"({"name":"a"})").m_Status, 404U);
}

}  // namespace
}  // namespace NoxAgent
