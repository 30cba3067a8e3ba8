#include "agent/daemon/control/TasksRoute.h"

#include "tests/agent/daemon/TestAgent.h"
#include "tests/agent/daemon/control/RawClient.h"
#include "tests/support/Texts.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>

using namespace std::chrono_literals;
using TestSupport::Texts;

namespace NoxAgent {
namespace {

class TasksRouteTest : public testing::Test {
 protected:
  TasksRouteTest() { m_Agent.AddScheduler().Add("handler"); }

  void PutTask(const std::string& name, const std::string& bytes) const {
    m_Agent.m_Dir.Write("state/tasks/" + name, bytes);
  }
  // Tasks whose lines make a part each.
  void PutLargeTasks(int count) const {
    const std::string history(100000, 'x');
    for (int number = 0; number < count; ++number) {
      PutTask("large" + std::to_string(number) + ".vsk",
              "<Task><RunTime>" + history + "</RunTime><Schedule><Trigger/></Schedule></Task>");
    }
  }

  // A line of the answer's each.
  static Json::List ReadAll(const ApiResponse& answer) {
    EXPECT_EQ(answer.m_Status, 200U) << answer.m_Body;
    Json::List lines;
    for (std::string part = answer.m_Parts(); !part.empty(); part = answer.m_Parts()) {
      std::istringstream text(part);
      for (std::string line; std::getline(text, line);) {
        lines.push_back(Json::Parse(line));
      }
    }
    return lines;
  }
  Json::List List() { return ReadAll(m_Agent.Ask("GET", "/v1/tasks")); }
  Texts Ids() {
    Texts ids;
    for (const Json& line : List()) {
      ids.push_back(line["id"].Text());
    }
    return ids;
  }

  TestAgent m_Agent;
};

TEST_F(TasksRouteTest, TellsOfEachTaskItsDocumentAndWhatTheSchedulerHasInMemory) {
  m_Agent.Load();
  (void)m_Agent.Call("AddTask", {{"taskId", "b"}, {"taskXml", TestAgent::DailyTask}}, "scheduler");
  PutTask("a.vsk",
          "<Task Enabled='0'><TaskHistory><RunTime>2026-06-15 08:00:00 Ok</RunTime></TaskHistory>"
          "<Schedule><Trigger/></Schedule></Task>");
  const Json::List lines = List();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], (Json{{"id", "a"},
                            {"enabled", false},
                            {"runTime", "2026-06-15 08:00:00 Ok"},
                            {"loaded", false}}))
      << "the scheduler has not read it yet";
  EXPECT_EQ(lines[1], (Json{{"id", "b"},
                            {"enabled", true},
                            {"loaded", true},
                            {"late", false},
                            {"nextRun", 2051251200}}))
      << "it never ran, and its handler tells nothing of runs";
}

TEST_F(TasksRouteTest, GivesTheSchedulersAttributesWhenAsked) {
  m_Agent.Load();
  (void)m_Agent.Call("AddTask", {{"taskId", "a"}, {"taskXml", TestAgent::DailyTask}}, "scheduler");
  const Json::List lines = ReadAll(m_Agent.Ask("GET", "/v1/tasks?attributes=1"));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0]["attributes"],
            m_Agent.Call("GetTaskAttributes", {{"taskId", "a"}}, "scheduler")["out"]["attributes"]);
}

TEST_F(TasksRouteTest, TellsOfASingleTaskAsTheListDoes) {
  PutTask("a.vsk", TestAgent::DailyTask);
  PutTask("b.vsk", TestAgent::DailyTask);
  m_Agent.Load();
  EXPECT_EQ(ReadAll(m_Agent.Ask("GET", "/v1/tasks?id=b")), Json::List{List().at(1)});
  EXPECT_EQ(ReadAll(m_Agent.Ask("GET", "/v1/tasks?id=none")), Json::List{});
  for (const char* const id : {"", "a%20b", "../tasks/a", "a.vsk", "a&attributes=1"}) {
    const ApiResponse answer = m_Agent.Ask("GET", std::string("/v1/tasks?id=") + id);
    EXPECT_EQ(answer.m_Status, 422U) << id;
    EXPECT_EQ(Json::Parse(answer.m_Body)["error"]["code"], "bad-task-id") << id;
  }
}

TEST_F(TasksRouteTest, GoesByTheOrderOfTheIds) {
  for (const char* const id : {"b", "a.1", "a", "Z", "a-1"}) {
    PutTask(id + std::string(".vsk"), TestAgent::DailyTask);
  }
  m_Agent.Load();
  EXPECT_EQ(Ids(), (Texts{"Z", "a", "a-1", "a.1", "b"}));
}

TEST_F(TasksRouteTest, LeavesOutWhatIsNoTask) {
  PutTask("a.vsk", TestAgent::DailyTask);
  PutTask("a b.vsk", TestAgent::DailyTask);
  PutTask(".hidden.vsk", TestAgent::DailyTask);
  PutTask("notes.txt", "");
  std::filesystem::create_directory(m_Agent.m_Dir / "state/tasks/folder.vsk");
  m_Agent.Load();
  EXPECT_EQ(Ids(), Texts{"a"});
}

TEST_F(TasksRouteTest, LeavesOutATaskThatIsDeletedMeanwhile) {
  PutLargeTasks(2);
  m_Agent.Load();
  const ApiResponse answer = m_Agent.Ask("GET", "/v1/tasks");
  std::filesystem::remove(m_Agent.m_Dir / "state/tasks/large0.vsk");
  const Json::List lines = ReadAll(answer);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0]["id"], "large1");
}

TEST_F(TasksRouteTest, ReadsOnlyDocumentsThatHaveChangedSinceTheLastList) {
  for (const char* const id : {"a", "b", "c"}) {
    PutTask(id + std::string(".vsk"), TestAgent::DailyTask);
    std::filesystem::last_write_time(m_Agent.m_Dir / ("state/tasks/" + std::string(id) + ".vsk"),
                                     std::filesystem::file_time_type::clock::now() - 1h);
  }
  m_Agent.Load();
  const auto scheduler = m_Agent.m_Plugins.Find("scheduler");
  const auto requestsOfAList = [&] {
    const unsigned long before = scheduler->Requests();
    EXPECT_EQ(List().size(), 3U);
    return scheduler->Requests() - before;
  };
  const unsigned long readingAll = requestsOfAList();
  EXPECT_EQ(requestsOfAList(), readingAll - 3);
  PutTask("b.vsk", "<Task Enabled='0'><Schedule><Trigger/></Schedule></Task>");
  EXPECT_EQ(List()[1]["enabled"], false);
  EXPECT_EQ(requestsOfAList(), readingAll - 2) << "it has changed just now";
}

TEST_F(TasksRouteTest, ReadsADocumentBehindASymbolicLinkEachTime) {
  m_Agent.m_Dir.Write("elsewhere.xml", TestAgent::DailyTask);
  std::filesystem::create_symlink(m_Agent.m_Dir / "elsewhere.xml",
                                  m_Agent.m_Dir / "state/tasks/a.vsk");
  const timespec hourAgo[] = {{std::time(nullptr) - 3600, 0}, {std::time(nullptr) - 3600, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, (m_Agent.m_Dir / "state/tasks/a.vsk").c_str(), hourAgo,
                        AT_SYMLINK_NOFOLLOW),
            0);
  m_Agent.Load();
  EXPECT_EQ(List()[0]["enabled"], true);
  m_Agent.m_Dir.Write("elsewhere.xml", "<Task Enabled='0'><Schedule><Trigger/></Schedule></Task>");
  EXPECT_EQ(List()[0]["enabled"], false);
}

TEST_F(TasksRouteTest, AHandlerThatFailsToTellOfARunBreaksNothingOff) {
  m_Agent.Add("command", "job_path=%installdir%/jobs\noutput_path=%installdir%/output\n",
              "CommandHandler");
  std::filesystem::create_directories(m_Agent.m_Dir / "state/jobs");
  m_Agent.Load();
  std::string task = TestAgent::DailyTask;
  task.replace(task.find("0002}"), 4, "0003");
  (void)m_Agent.Call("AddTask", {{"taskId", "a"}, {"taskXml", task}}, "scheduler");
  (void)m_Agent.Call("AddTask", {{"taskId", "b"}, {"taskXml", TestAgent::DailyTask}}, "scheduler");
  ASSERT_TRUE(m_Agent.m_Plugins.Find("command")->CloseQueue(60000));
  const Json::List lines = List();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].Find("error"), nullptr) << lines[0];
  EXPECT_FALSE(lines[0].Has("run"));
}

TEST_F(TasksRouteTest, IsEmptyWithoutATask) {
  m_Agent.Load();
  EXPECT_EQ(Ids(), Texts());
  std::filesystem::remove(m_Agent.m_Dir / "state/tasks");
  EXPECT_EQ(Ids(), Texts()) << "the scheduler opens nothing then, so nothing is closed";
}

TEST_F(TasksRouteTest, EndsWithTheErrorThatBreaksItOff) {
  PutLargeTasks(3);
  m_Agent.Load();
  const ApiResponse answer = m_Agent.Ask("GET", "/v1/tasks");
  EXPECT_EQ(Json::Parse(answer.m_Parts())["id"], "large0");
  ASSERT_TRUE(m_Agent.m_Plugins.Find("scheduler")->CloseQueue(60000));
  EXPECT_EQ(Json::Parse(answer.m_Parts())["error"]["code"], "queue-closed");
  EXPECT_EQ(answer.m_Parts(), "");
  EXPECT_EQ(m_Agent.Ask("GET", "/v1/tasks").m_Status, 503U);
}

TEST_F(TasksRouteTest, AnAgentWithoutASchedulerHasNoList) {
  TestAgent agent;
  agent.Add("one").Load();
  const ApiResponse answer = agent.Ask("GET", "/v1/tasks");
  EXPECT_EQ(answer.m_Status, 404U);
  EXPECT_EQ(Json::Parse(answer.m_Body)["error"]["code"], "no-scheduler");
}

// Over the socket.

// The body that the chunks at the front of `bytes` make, which are taken off.
std::string TakeChunks(std::string& bytes) {
  std::string body;
  for (std::size_t size = 1; size > 0;) {
    const std::size_t head = bytes.find("\r\n");
    size = std::stoul(bytes.substr(0, head), nullptr, 16);
    body += bytes.substr(head + 2, size);
    bytes.erase(0, head + 2 + size + 2);
  }
  return body;
}

TEST_F(TasksRouteTest, ComesInChunksAndLeavesTheConnectionToTheNextRequest) {
  PutLargeTasks(5);
  m_Agent.Serve();
  std::string answers = RawClient(m_Agent.SocketPath())
                            .Send("GET /v1/tasks HTTP/1.1\r\n\r\n")
                            .Send(RawClient::Request("GET", "/v1/status", {}))
                            .ReadAll();
  EXPECT_EQ(StatusOf(answers), 200U);
  EXPECT_NE(answers.find("Content-Type: application/x-ndjson\r\n"), std::string::npos);
  answers = BodyOf(answers);
  const std::string body = TakeChunks(answers);
  EXPECT_EQ(std::count(body.begin(), body.end(), '\n'), 5);
  EXPECT_EQ(StatusOf(answers), 200U) << answers.substr(0, 200);
  EXPECT_EQ(Json::Parse(BodyOf(answers))["version"], "test");
}

TEST_F(TasksRouteTest, NeedsAClientThatKnowsChunks) {
  m_Agent.Serve();
  for (const char* const path : {"tasks", "notifications"}) {
    const std::string answer = RawClient(m_Agent.SocketPath())
                                   .Send("GET /v1/" + std::string(path) + " HTTP/1.0\r\n\r\n")
                                   .ReadAll();
    EXPECT_EQ(StatusOf(answer), 505U) << answer;
  }
}

// As for any request: whoever waits for a thread hears of it.
TEST_F(TasksRouteTest, EndsWithAnErrorWhenNoThreadComesFreeForItsNextPart) {
  PutLargeTasks(50);
  m_Agent.Add("one");
  m_Agent.Serve({600, 600, 1, 600});
  RawClient client(m_Agent.SocketPath());
  (void)client.Send("GET /v1/tasks HTTP/1.1\r\n\r\n").ReadUntil("large0");
  m_Agent.HoldEveryThread();
  std::string rest;
  EXPECT_NO_THROW(rest = client.ReadUntil("0\r\n\r\n")) << "the list waits for good";
  EXPECT_NE(rest.find("busy"), std::string::npos);
  m_Agent.ReleaseEveryThread();
}

TEST_F(TasksRouteTest, IsCutShortWhenTheAgentStops) {
  PutLargeTasks(50);
  m_Agent.Serve();
  RawClient client(m_Agent.SocketPath());
  (void)client.Send("GET /v1/tasks HTTP/1.1\r\n\r\n").ReadUntil("large0");
  (void)m_Agent.m_Server->Stop(0);
  const std::string rest = client.ReadAll();
  EXPECT_EQ(rest.find("large49"), std::string::npos);
  EXPECT_FALSE(rest.ends_with("0\r\n\r\n")) << "the client sees that there is more";
  EXPECT_TRUE(m_Agent.m_Server->Stop(60000));
}

}  // namespace
}  // namespace NoxAgent
