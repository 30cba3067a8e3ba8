// The control socket as any HTTP client meets it.
#include "agent/library/Json.h"
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <ctime>

using NoxAgent::Json;

namespace {

class Http : public AgentFixture {
 protected:
  Json Post(const std::string& target, const Json& body, int status = 200) const {
    const auto response = AgentFixture::Http("POST", target, body.Dump());
    EXPECT_EQ(response.m_Status, status) << target << " " << body << ": " << response.m_Body;
    return Json::Parse(response.m_Body);
  }
  static std::string Operation(const std::string& name) {
    return "/v1/scheduler/INoxTaskScheduler/" + name;
  }
};

}  // namespace

TEST_F(Http, ServesTheOperationsOfTheScheduler) {
  StartAgent();
  const Json added = Post(Operation("AddTask"),
                          {{"taskId", "a"}, {"taskXml", Document(Trigger(0, FromNow(3600)))}});
  EXPECT_EQ(added["result"], 1);
  EXPECT_EQ(added["out"]["newTaskId"], "a");
  const Json read = Post(Operation("GetTaskXML"), {{"taskId", "a"}});
  EXPECT_EQ(read["out"]["taskXml"], TaskFile("a"));
  EXPECT_EQ(Post(Operation("EnableTask"), {{"taskIds", "a"}, {"enable", false}})["result"], 1);
  EXPECT_EQ(Post(Operation("GetTaskAttributes"), {{"taskId", "a"}})["out"]["attributes"]["t5"],
            "0");
  EXPECT_EQ(Post(Operation("SetRunState"), {{"taskId", "b"}, {"runState", "Ok"}})["result"], 1);
  EXPECT_EQ(Post(Operation("DeleteTask"), {{"taskId", "a"}})["result"], 1);
  EXPECT_EQ(TaskFile("a"), "");
}

TEST_F(Http, HandsABatchToTheCommandHandler) {
  StartAgent();
  AddJob("a", "echo run >> runs");
  AddTask("a", Trigger(0, FromNow(3600)));
  const Json answer =
      Post("/v1/command/INoxScheduledTaskHandler/RunTasks", {{"batch", "a:0:0:0;"}});
  EXPECT_EQ(answer["result"], -10000);
  EXPECT_TRUE(WaitUntil([&] { return CountLines("runs") == 1; }));
}

TEST_F(Http, TellsWhereADocumentIsWrong) {
  StartAgent();
  const Json answer =
      Post(Operation("AddTask"), {{"taskId", "a"}, {"taskXml", "<Task>\n <x>\n</Task>"}}, 422);
  EXPECT_EQ(answer["error"]["line"], 3) << answer;
  EXPECT_TRUE(answer["error"].Has("column")) << answer;
}

TEST_F(Http, AnswersWhatItDoesNotKnowWithAnErrorOfItsOwn) {
  StartAgent();
  const struct {
    const char* m_Method;
    std::string m_Target;
    const char* m_Body;
    int m_Status;
  } rows[] = {
      {"GET", "/v1/nothing", "", 404},
      {"GET", "/", "", 404},
      {"POST", "/v1/nobody/INoxTaskScheduler/AddTask", "{}", 404},
      {"POST", "/v1/scheduler/INoxNothing/AddTask", "{}", 404},
      {"POST", Operation("AddTasks"), "{}", 404},
      {"GET", Operation("GetTaskXML"), "", 405},
      {"POST", Operation("GetTaskXML"), "{", 400},
      {"POST", Operation("GetTaskXML"), "{}", 400},
      {"POST", Operation("GetTaskXML"), "{\"taskId\":1}", 400},
      {"POST", Operation("GetTaskXML"), "{\"taskId\":\"a\",\"x\":1}", 400},
      {"POST", Operation("DeleteTask"), "{\"taskId\":\"../x\"}", 422},
  };
  for (const auto& row : rows) {
    const auto response = AgentFixture::Http(row.m_Method, row.m_Target, row.m_Body);
    EXPECT_EQ(response.m_Status, row.m_Status)
        << row.m_Method << " " << row.m_Target << " " << row.m_Body << ": " << response.m_Body;
    EXPECT_TRUE(Json::Parse(response.m_Body).Has("error")) << response.m_Body;
  }
}

TEST_F(Http, TheStatusCountsTasksAndTellsZoneAndNextReading) {
  StartAgent({}, {{"TZ", ":Europe/Berlin"}});
  AddTask("a", Trigger(0, FromNow(3600 * 24)));
  const auto status = [&](const std::string& query = {}) {
    return Json::Parse(AgentFixture::Http("GET", "/v1/status" + query).m_Body);
  };
  ASSERT_TRUE(WaitUntil([&] { return status().Has("nextReading"); }));
  const long soon = static_cast<long>(std::time(nullptr)) + 3600;
  EXPECT_LE(status()["nextReading"].Long(), soon);
  EXPECT_GT(status()["nextReading"].Long(), soon - 600);
  EXPECT_EQ(status()["zone"], ":Europe/Berlin");
  EXPECT_EQ(status()["zoneName"], "Europe/Berlin");
  EXPECT_EQ(status()["tasks"], (Json{{"loaded", 1}}));
  EXPECT_EQ(status("?tasks=1")["tasks"], (Json{{"loaded", 1}, {"ids", Json::List{"a"}}}));
  const auto report = [](const Json& answer) { return answer["plugins"].At(0)["report"].Text(); };
  EXPECT_EQ(report(status()), "Task processing is enabled.\n");
  EXPECT_NE(report(status("?tasks=1")).find("\n a\n"), std::string::npos);
}

TEST_F(Http, StreamsNotificationsAsJsonLines) {
  StartAgent();
  const HttpClient stream(Socket());
  stream.Send("GET /v1/notifications HTTP/1.1\r\nHost: agent\r\n\r\n");
  EXPECT_EQ(stream.ReadUntil("\r\n\r\n").find("HTTP/1.1 200"), 0u);
  AddTask("a", Trigger(0, FromNow(3600)));
  const std::string chunk = stream.ReadUntil("}\n");
  const Json line =
      Json::Parse(chunk.substr(chunk.find('{'), chunk.find('}') - chunk.find('{') + 1));
  EXPECT_EQ(line["code"], 102) << chunk;
  EXPECT_EQ(line["id"], "a") << chunk;
}

TEST_F(Http, ServesOthersWhileAClientStalls) {
  StartAgent();
  const HttpClient stalled(Socket());
  stalled.Send("POST /v1/refresh HTTP/1.1\r\nHost: agent\r\nContent-Length: 100\r\n\r\n{");
  const HttpClient silent(Socket());
  EXPECT_EQ(AgentFixture::Http("GET", "/v1/status").m_Status, 200);
  EXPECT_EQ(Post(Operation("GetTaskXML"), {{"taskId", "a"}})["result"], -1);
}
