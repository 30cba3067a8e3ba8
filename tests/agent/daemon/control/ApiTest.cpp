#include "agent/daemon/control/Api.h"

#include "tests/agent/daemon/TestAgent.h"

#include <AgentInterfacesV3/AInterfaceTable.h>

#include <gtest/gtest.h>

using Corvane::AgentInterfacesV3::AInterfaceTable;
namespace NoxAgent {
namespace {

class ApiTest : public testing::Test {
 protected:
  ApiTest() { m_Agent.Add("one").Add("minimal", "", "MinimalPlugin").Load(); }

  TestAgent m_Agent;
};

TEST_F(ApiTest, AnswersWhatIsNotThereWithItsError) {
  const struct {
    const char* m_Method;
    std::string m_Target;
    const char* m_Body;
    unsigned m_Status;
    const char* m_Code;
  } rows[] = {
      {"GET", "/", "", 404, "unknown-path"},
      {"GET", "", "", 404, "unknown-path"},
      {"GET", "/v1", "", 404, "unknown-path"},
      {"GET", "/v1/status/", "", 404, "unknown-path"},
      {"GET", "/v1/status?x=1", "", 400, "bad-query"},
      {"GET", "/v1/status?tasks=1&x=1", "", 400, "bad-query"},
      {"GET", "/v1/notifications?x", "", 400, "bad-query"},
      {"POST", "/v1/refresh?tasks=1", "", 400, "bad-query"},
      {"POST", "/v1/notify?x=1", R"({"kind":1})", 400, "bad-query"},
      {"GET", "/v1/files?x=1", "", 400, "bad-query"},
      {"GET", "/v1/tasks?x=1", "", 400, "bad-query"},
      {"POST", "/v1/tasks/add?force=2", "", 400, "bad-query"},
      {"GET", "/v1/nothing?x=1", "", 404, "unknown-path"},
      {"GET", "/v2/one/INoxObject/ObjectDebugInfo", "", 404, "unknown-path"},
      {"POST", "/v1/one/INoxObject/ObjectDebugInfo/more", "", 404, "unknown-path"},
      {"GET", "/../../etc/passwd", "", 404, "unknown-path"},
      {"POST", "/v1/../etc/passwd", "", 404, "unknown-plugin"},
      {"POST", "/v1/%2e%2e/INoxObject/ObjectDebugInfo", "", 404, "unknown-plugin"},
      {"GET", std::string(8000, 'x'), "", 404, "unknown-path"},
      {"POST", "/v1/status", "", 405, "method-not-allowed"},
      {"GET", "/v1/tasks", "", 404, "no-scheduler"},
      {"POST", "/v1/tasks/add", "", 404, "no-scheduler"},
      {"GET", "/v1/tasks/add", "", 405, "method-not-allowed"},
      {"GET", "/v1/refresh", "", 405, "method-not-allowed"},
      {"POST", "/v1/tasks", "", 405, "method-not-allowed"},
      {"PUT", "/v1/notify", "", 405, "method-not-allowed"},
      {"GET", "/v1/one/INoxObject/ObjectDebugInfo", "", 405, "method-not-allowed"},
      {"POST", "/v1/other/INoxObject/ObjectDebugInfo", "", 404, "unknown-plugin"},
      {"POST", "/v1//INoxObject/ObjectDebugInfo", "", 404, "unknown-plugin"},
      {"POST", "/v1/one/INoxOther/ObjectDebugInfo", "", 404, "unknown-interface"},
      {"POST", "/v1/minimal/INoxTaskScheduler/RefreshTaskList", "", 404, "unknown-interface"},
      {"POST", "/v1/one/INoxObject/Explode", "", 404, "unknown-operation"},
      {"POST", "/v1/one/INoxTaskScheduler/ObjectDebugInfo", "", 404, "unknown-operation"},
      {"POST", "/v1/one/INoxObject/ObjectDebugInfo?force=1", "", 400, "bad-query"},
      {"POST", "/v1/one/INoxTaskScheduler/AddTask?force=2", "{}", 400, "bad-query"},
      {"POST", "/v1/one/INoxTaskScheduler/DeleteTask", "{}", 400, "missing-argument"},
      {"POST", "/v1/one/INoxTaskScheduler/DeleteTask", "[]", 400, "bad-json"},
      {"POST", "/v1/one/INoxTaskScheduler/GetTaskXML", R"({"taskId":"throw"})", 500,
       "operation-failed"},
      {"POST", "/v1/notify", "{}", 400, "missing-argument"},
      {"POST", "/v1/notify", R"({"kind":"x"})", 400, "mistyped-argument"},
      {"POST", "/v1/notify", R"({"kind":10})", 400, "missing-argument"},
      {"POST", "/v1/notify", R"({"kind":2147483648})", 400, "mistyped-argument"},
      {"POST", "/v1/notify", R"({"kind":3})", 400, "unknown-kind"},
      {"POST", "/v1/notify", R"({"kind":-1})", 400, "unknown-kind"},
      {"POST", "/v1/notify", R"({"kind":11})", 400, "unknown-kind"},
      {"POST", "/v1/notify", R"({"kind":1,"text":1})", 400, "mistyped-argument"},
      {"POST", "/v1/notify", R"({"kind":1,"more":1})", 400, "unexpected-argument"},
  };
  for (const auto& row : rows) {
    const ApiResponse answer = m_Agent.Ask(row.m_Method, row.m_Target, row.m_Body);
    EXPECT_EQ(answer.m_Status, row.m_Status) << row.m_Target.substr(0, 80) << answer.m_Body;
    const Json body = Json::Parse(answer.m_Body);
    EXPECT_EQ(body["error"]["code"], row.m_Code) << row.m_Target.substr(0, 80) << answer.m_Body;
    EXPECT_NE(body["error"]["message"], "") << row.m_Target.substr(0, 80);
    EXPECT_LT(answer.m_Body.size(), 1000U) << "what a client sends is not sent back at length";
  }
}

TEST_F(ApiTest, NamesTheMethodThatIsAllowed) {
  EXPECT_EQ(m_Agent.Ask("DELETE", "/v1/status").m_Allow, "GET");
  EXPECT_EQ(m_Agent.Ask("GET", "/v1/one/INoxObject/ObjectDebugInfo").m_Allow, "POST");
}

// No operation is out of reach and none needs code of its own.
TEST_F(ApiTest, HasARouteForEveryOperationOfEveryServedInterface) {
  unsigned routes = 0;
  for (const auto* const table : m_Agent.m_Plugins.Find("one")->Interfaces()) {
    for (const auto& operation : table->m_Operations) {
      const std::string target =
          "/v1/one/" + std::string(table->m_Name) + "/" + std::string(operation.m_Name);
      const ApiResponse answer = m_Agent.Ask("POST", target, "{}");
      EXPECT_NE(answer.m_Body.find(operation.Arguments().empty() ? "result" : ""),
                std::string::npos)
          << target;
      EXPECT_EQ(answer.m_Body.find("unknown-operation"), std::string::npos) << target;
      ++routes;
    }
  }
  EXPECT_EQ(routes, 22U);
}

TEST_F(ApiTest, CarriesArgumentsThereAndBack) {
  EXPECT_EQ(m_Agent.Call("GetTaskAttributes",
                         {{"taskId", "a"}, {"attributes", {{"t0", "kept"}, {"k", "v"}}}}),
            (Json{{"result", 1},
                  {"out", {{"attributes", {{"t0", "kept"}, {"k", "v"}, {"inputs", "none"}}}}}}));
  EXPECT_EQ(m_Agent.Call("GetTaskAttributes", {{"taskId", "a"}, {"inputAttributes", {{"x", "y"}}}}),
            (Json{{"result", 1}, {"out", {{"attributes", {{"t0", "a"}, {"inputs", "1"}}}}}}));
  EXPECT_EQ(m_Agent.Call("GetTaskXML", {{"taskId", "none"}})["result"], -1);
}

TEST_F(ApiTest, ReadsSettingsForAPluginThatAnswersARequest) {
  (void)m_Agent.Call("SetRunState", {{"taskId", "subscribe"}, {"runState", "Ok"}});
  EXPECT_NE(m_Agent.Report().find("setting: (none)"), std::string::npos) << m_Agent.Report();
}

TEST_F(ApiTest, APluginThatIsGoneAnswersWithAnError) {
  const auto plugin = m_Agent.m_Plugins.Find("one");
  ASSERT_TRUE(m_Agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(m_Agent.CallError("RefreshTaskList", Json::Object{}), "unknown-plugin");
  m_Agent.m_Plugins.Add(plugin);  // as for a request that found it just before
  const ApiResponse answer = m_Agent.Ask("POST", "/v1/one/INoxTaskScheduler/RefreshTaskList");
  EXPECT_EQ(answer.m_Status, 503U) << answer.m_Body;
  m_Agent.m_Plugins.Remove(*plugin);
}

TEST_F(ApiTest, OpensObjectsByTheirClassForPlugins) {
  AgentSDK::AHost& host = m_Agent.m_Host;
  const BaseSDK::AGuid handler("{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C004}");
  void* object = nullptr;
  ASSERT_GT(host.OpenObject(TestAgent::ClassId, handler, 0, object), 0);
  auto* const opened = static_cast<HandlerCalls::Handler*>(object);
  EXPECT_EQ(opened->RunTasksEx("a:0:0:0;"), 1);
  EXPECT_FALSE(m_Agent.m_HandlerCalls.WaitUntilNone(0));
  (void)opened->Release();
  EXPECT_TRUE(m_Agent.m_HandlerCalls.WaitUntilNone(0));
  EXPECT_NE(m_Agent.Report().find("run a:0:0:0;\n"), std::string::npos);

  object = &host;
  EXPECT_LT(host.OpenObject("{AAAAAAAA-0000-0000-0000-00000000000F}", handler, 0, object), 0);
  EXPECT_EQ(object, nullptr);
  EXPECT_LT(host.OpenObject("nonsense", handler, 0, object), 0);
  EXPECT_LT(host.OpenObject("", handler, 0, object), 0);
  EXPECT_LT(host.OpenObject("{AAAAAAAA-0000-0000-0000-000000000002}", handler, 0, object), 0)
      << "it does not serve this interface";
  EXPECT_LT(host.OpenObject(TestAgent::ClassId, handler, 1, object), 0);
}

TEST_F(ApiTest, RefusesToGuessWhichPluginAsks) {
  AgentSDK::AHost& host = m_Agent.m_Host;
  const long code = 300;
  EXPECT_LT(host.Subscribe("somebody", &code, 1), 1);
  EXPECT_EQ(host.GetConfigString("Configuration", "task_file_extension", "fallback"),
            BaseSDK::AString("fallback"));
}

}  // namespace
}  // namespace NoxAgent
