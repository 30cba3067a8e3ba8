#include "agent/daemon/control/TasksRoute.h"
#include "tests/agent/daemon/TestAgent.h"
#include "tests/support/ForwardingFileSystem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <thread>

namespace NoxAgent {
namespace {

constexpr const char* DeadTask =
    "<Task><HandlerCLSID>{AAAAAAAA-0000-0000-0000-000000000002}</HandlerCLSID></Task>";

Json Task(const std::string& id, const std::string& document = TestAgent::DailyTask) {
  return {{"taskId", id}, {"taskXml", document}};
}

class AddTasks : public testing::Test {
 protected:
  AddTasks() { m_Agent.AddScheduler().Add("handler").Load(); }

  ApiResponse Ask(const std::string& body, const std::string& query = {}) {
    return m_Agent.Ask("POST", "/v1/tasks/add" + query, body);
  }
  // What became of each.
  Json Add(const Json::List& tasks, const std::string& query = {}) {
    const ApiResponse answer = Ask(Json{{"tasks", tasks}}.Dump(), query);
    EXPECT_EQ(answer.m_Status, 200U) << answer.m_Body;
    return Json::Parse(answer.m_Body)["tasks"];
  }
  // The error of a request that has added nothing.
  Json Refused(const std::string& body, unsigned status = 422) {
    const ApiResponse answer = Ask(body);
    EXPECT_EQ(answer.m_Status, status) << answer.m_Body;
    EXPECT_EQ(Count(), 0);
    return Json::Parse(answer.m_Body)["error"];
  }
  Json Refused(const Json::List& tasks) { return Refused(Json{{"tasks", tasks}}.Dump()); }

  long Count() const {
    return std::distance(std::filesystem::directory_iterator(m_Agent.m_Dir / "state/tasks"), {});
  }
  std::string FileOf(const std::string& id) const {
    return m_Agent.m_Dir.Read("state/tasks/" + id + ".vsk");
  }

  TestAgent m_Agent;
};

TEST_F(AddTasks, AddsEachInTheOrderOfTheRequest) {
  EXPECT_EQ(Add({Task("b"), Task("a"), Task("c", TestAgent::DailyTask + " ")}),
            (Json::List{{{"taskId", "b"}, {"warnings", Json::List{}}},
                        {{"taskId", "a"}, {"warnings", Json::List{}}},
                        {{"taskId", "c"}, {"warnings", Json::List{}}}}));
  EXPECT_EQ(Count(), 3);
  EXPECT_EQ(FileOf("c"), TestAgent::DailyTask + " ");
  EXPECT_EQ(m_Agent.Call("GetTaskAttributes", {{"taskId", "c"}}, "scheduler")["result"], 1)
      << "the scheduler holds it";
}

TEST_F(AddTasks, ReplacesATaskOnlyWhileItSaysWhatWasRead) {
  const auto replace = [this](const std::string& document, const std::string& read) {
    Json task = Task("a", document);
    task["replaces"] = read;
    const Json outcome = Add({task}).At(0);
    const Json* const error = outcome.Find("error");
    return error == nullptr ? "replaced" : error->At("code").Text();
  };
  const std::string first = TestAgent::DailyTask;
  const std::string second =
      first.substr(0, first.find("08:00")) + "09:00" + first.substr(first.find("08:00") + 5);
  EXPECT_EQ(replace(second, first), "task-changed") << "there is none";
  EXPECT_EQ(Count(), 0);
  (void)Add({Task("a", first)});
  EXPECT_EQ(replace(second, first), "replaced");
  EXPECT_EQ(FileOf("a"), second);
  EXPECT_EQ(replace(first, first), "task-changed");
  EXPECT_EQ(FileOf("a"), second);
  const std::string afterARun =
      "<TaskHistory><RunTime>2026-06-15 08:00:00 Ok</RunTime></TaskHistory>";
  m_Agent.m_Dir.Write("state/tasks/a.vsk",
                      second.substr(0, second.find("</Task>")) + afterARun + "</Task>");
  EXPECT_EQ(replace(first, second), "replaced") << "a run is no change";
  EXPECT_NE(FileOf("a").find(afterARun), std::string::npos);
  EXPECT_EQ(
      m_Agent.Call("EnableTask", {{"taskIds", "a"}, {"enable", false}}, "scheduler")["result"], 1);
  EXPECT_EQ(replace(second, first), "task-changed") << "whether it is enabled is one";
}

TEST_F(AddTasks, RefusesAConditionThatIsNone) {
  Json task = Task("a");
  task["replaces"] = 1;
  EXPECT_EQ(Refused(Json{{"tasks", Json::List{task}}}.Dump(), 400)["code"], "mistyped-argument");
  task = {{"taskXml", TestAgent::DailyTask}, {"replaces", ""}};
  EXPECT_EQ(Refused(Json{{"tasks", Json::List{task}}}.Dump(), 400)["code"], "missing-argument");
}

TEST_F(AddTasks, InventsAnIdForEachTaskWithoutOne) {
  const Json outcomes = Add({Task(""), {{"taskXml", TestAgent::DailyTask}}, Task("")});
  ASSERT_EQ(outcomes.Items().size(), 3U);
  for (const Json& outcome : outcomes.Items()) {
    EXPECT_EQ(outcome["taskId"].Text().find("corvane_task_"), 0U) << outcome;
    EXPECT_EQ(FileOf(outcome["taskId"].Text()), TestAgent::DailyTask);
  }
  EXPECT_EQ(Count(), 3) << "three IDs";
}

TEST_F(AddTasks, ReplacesTheTaskOfAnId) {
  (void)Add({Task("a")});
  (void)Add({Task("b"), Task("a", TestAgent::DailyTask + " ")});
  EXPECT_EQ(FileOf("a"), TestAgent::DailyTask + " ");
  EXPECT_EQ(Count(), 2);
}

TEST_F(AddTasks, AddsNothingWhenOneIsRefusedAndTellsWhichOne) {
  Json error = Refused({Task("a"), Task("b"), Task("c", "<Task>\n <x>\n</Task>"), Task("d")});
  EXPECT_EQ(error["code"], "bad-document");
  EXPECT_EQ(error["line"], 3);
  EXPECT_TRUE(error.Has("column"));
  EXPECT_EQ(error["index"], 2);
  EXPECT_EQ(error["taskId"], "c");
  error = Refused({Task("a"), {{"taskXml", DeadTask}}});
  EXPECT_EQ(error["code"], "never-runs");
  EXPECT_EQ(error["index"], 1);
  EXPECT_FALSE(error.Has("taskId")) << "none was given";
  error = Refused({Task("a"), Task("b c")});
  EXPECT_EQ(error["code"], "bad-task-id");
  EXPECT_EQ(error["index"], 1);
  EXPECT_EQ(error["taskId"], "b c");
}

TEST_F(AddTasks, DoesNotSendALongIdBack) {
  const Json error = Refused({Task(std::string(100000, 'x'))});
  EXPECT_EQ(error["code"], "bad-task-id");
  EXPECT_LT(error.Dump().size(), 1000U);
}

TEST_F(AddTasks, RefusesTwoTasksOfOneId) {
  const Json error = Refused({Task("a"), Task("b"), Task("a", TestAgent::DailyTask + " ")});
  EXPECT_EQ(error["code"], "duplicate-task-id");
  EXPECT_EQ(error["index"], 2);
  EXPECT_EQ(error["taskId"], "a");
  EXPECT_NE(error["message"].Text().find("the index 0"), std::string::npos) << error;
}

TEST_F(AddTasks, TakesWhatNeverRunsWhenForced) {
  const Json outcomes = Add({Task("a"), Task("dead", DeadTask)}, "?force=1");
  EXPECT_EQ(outcomes.At(1)["taskId"], "dead");
  EXPECT_FALSE(outcomes.At(1).Has("error"));
}

TEST_F(AddTasks, OneThatCannotBeWrittenDoesNotKeepTheOthersBack) {
  std::filesystem::create_directory(m_Agent.m_Dir / "state/tasks/b.vsk");
  const Json outcomes = Add({Task("a"), Task("b"), Task("c")});
  ASSERT_EQ(outcomes.Items().size(), 3U);
  EXPECT_EQ(outcomes.At(0)["taskId"], "a");
  EXPECT_EQ(outcomes.At(1),
            (Json{{"taskId", "b"},
                  {"error",
                   {{"code", "not-written"},
                    {"message",
                     "the task b was not added: a file of its name is no task; noxctl files lists "
                     "it"}}}}));
  EXPECT_EQ(outcomes.At(2)["taskId"], "c");
  EXPECT_FALSE(outcomes.At(2).Has("error")) << "the failure before is not its own";
  EXPECT_EQ(FileOf("a"), TestAgent::DailyTask);
  EXPECT_EQ(FileOf("c"), TestAgent::DailyTask);
}

// Whoever asks the disk to make a change last is told so.
class StubbornDisk : public TestSupport::ForwardingFileSystem {
 public:
  StubbornDisk() : ForwardingFileSystem(BaseSDK::AFileSystem::Current()) { (void)Replace(this); }
  ~StubbornDisk() override { (void)Replace(nullptr); }
  int Sync(int fd) override {
    return m_Error != 0 ? m_Error.load() : ForwardingFileSystem::Sync(fd);
  }
  int SyncAll(int fd) override {
    return m_Error != 0 ? m_Error.load() : ForwardingFileSystem::SyncAll(fd);
  }
  std::atomic<int> m_Error{0};
};

class AddTasksToAStubbornDisk : public testing::Test {
 protected:
  StubbornDisk m_Disk;  // below the agent's
};

TEST_F(AddTasksToAStubbornDisk, TellsForEachThatItIsNotOnTheDisk) {
  TestAgent agent;
  agent.AddScheduler().Add("handler").Load();
  m_Disk.m_Error = EIO;
  const ApiResponse answer =
      agent.Ask("POST", "/v1/tasks/add", Json{{"tasks", Json::List{Task("a"), Task("b")}}}.Dump());
  m_Disk.m_Error = 0;
  const Json outcomes = Json::Parse(answer.m_Body)["tasks"];
  for (const std::size_t i : {0U, 1U}) {
    EXPECT_EQ(outcomes.At(i)["error"]["code"], "not-written") << outcomes;
    EXPECT_NE(outcomes.At(i)["error"]["message"].Text().find("Input/output error"),
              std::string::npos);
  }
}

// Counts how often the thread that made it makes all safe, while it is in force.
class OwnSafety : public TestSupport::ForwardingFileSystem {
 public:
  OwnSafety() : ForwardingFileSystem(BaseSDK::AFileSystem::Current()), m_Before(Replace(this)) {}
  ~OwnSafety() override { (void)Replace(m_Before); }
  void MakeSafe() override {
    m_Count += std::this_thread::get_id() == m_Thread ? 1U : 0U;
    ForwardingFileSystem::MakeSafe();
  }
  unsigned m_Count = 0;

 private:
  AFileSystem* const m_Before;
  const std::thread::id m_Thread = std::this_thread::get_id();
};

TEST_F(AddTasks, MakesAllSafeTogether) {
  const OwnSafety files;
  (void)Add({Task("a"), Task("b"), Task("c")});
  EXPECT_EQ(files.m_Count, 1U);
  EXPECT_EQ(m_Agent.Call("AddTask", Task("d"), "scheduler")["result"], 1);
  EXPECT_GT(files.m_Count, 2U) << "before and behind the one request";
}

TEST_F(AddTasks, GivesTheWarningsOfEachAsAddTaskDoes) {
  std::string odd = TestAgent::DailyTask;
  odd.insert(odd.find(" Type="), " KillAtEnd=\"yes\"");
  const Json outcomes = Add({Task("a"), Task("b", odd)});
  EXPECT_TRUE(outcomes.At(0).Items("warnings").empty());
  const Json alone = m_Agent.Call("AddTask", Task("b", odd), "scheduler");
  EXPECT_FALSE(alone.Items("warnings").empty());
  EXPECT_EQ(outcomes.At(1).Items("warnings"), alone.Items("warnings"));
}

TEST_F(AddTasks, ASchedulerThatIsUnloadedFailsWhatIsLeft) {
  ASSERT_TRUE(m_Agent.m_Plugins.Find("scheduler")->CloseQueue(60000));
  const Json outcomes = Add({Task("a"), Task("")});
  EXPECT_EQ(outcomes.At(0)["error"]["code"], "queue-closed");
  EXPECT_EQ(outcomes.At(1)["taskId"], "");
  EXPECT_EQ(outcomes.At(1)["error"]["code"], "queue-closed");
}

TEST_F(AddTasks, NamesTheTaskWhoseMemberIsMissingOrMistyped) {
  const struct {
    const char* m_Item;
    const char* m_Code;
  } rows[] = {
      {R"({"taskId":"b"})", "missing-argument"},
      {R"({"taskId":"b","taskXml":1})", "mistyped-argument"},
      {R"({"taskId":1,"taskXml":""})", "mistyped-argument"},
      {R"({"taskId":null,"taskXml":""})", "mistyped-argument"},
      {R"({"taskId":"b","taskXml":"","more":1})", "unexpected-argument"},
      {R"("b")", "mistyped-argument"},
      {R"([])", "mistyped-argument"},
  };
  for (const auto& row : rows) {
    const std::string body = "{\"tasks\":[" + Task("a").Dump() + "," + row.m_Item + "]}";
    const Json error = Refused(body, 400);
    EXPECT_EQ(error["code"], row.m_Code) << row.m_Item << error;
    EXPECT_EQ(error["index"], 1) << row.m_Item << error;
  }
}

TEST_F(AddTasks, RefusesABodyThatIsNoListOfTasks) {
  const struct {
    const char* m_Body;
    const char* m_Code;
  } rows[] = {
      {"", "missing-argument"},
      {"{}", "missing-argument"},
      {R"({"tasks":{}})", "mistyped-argument"},
      {R"({"tasks":[],"force":1})", "unexpected-argument"},
      {R"([])", "bad-json"},
  };
  for (const auto& row : rows) {
    const Json error = Refused(row.m_Body, 400);
    EXPECT_EQ(error["code"], row.m_Code) << row.m_Body << error;
    EXPECT_FALSE(error.Has("index")) << row.m_Body << error;
  }
}

TEST_F(AddTasks, AnEmptyListAddsNothing) {
  EXPECT_EQ(Add({}), Json(Json::List{}));
}

}  // namespace
}  // namespace NoxAgent
