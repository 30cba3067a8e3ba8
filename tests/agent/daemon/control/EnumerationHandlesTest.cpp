#include "agent/daemon/control/EnumerationHandles.h"

#include "tests/agent/daemon/TestAgent.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace NoxAgent {
namespace {

class EnumerationHandlesTest : public testing::Test {
 protected:
  EnumerationHandlesTest() { m_Agent.Add("one").Add("two").Load(); }

  std::string Open(const std::string& plugin = "one") {
    return m_Agent.Call("FindFirstTask", Json::Object{}, plugin)["out"]["handle"].Text();
  }
  std::string ErrorOf(const std::string& operation, const Json& handle,
                      const std::string& plugin = "one") {
    const Json answer = m_Agent.Call(operation, {{"handle", handle}}, plugin);
    return answer.Has("error") ? answer["error"]["code"].Text() : "";
  }

  TestAgent m_Agent;
};

TEST_F(EnumerationHandlesTest, ClientsGetTokensAndNeverTheHandle) {
  const Json first = m_Agent.Call("FindFirstTask", Json::Object{});
  EXPECT_EQ(first["out"]["taskId"], "first");
  const std::string token = first["out"]["handle"].Text();
  EXPECT_EQ(token.size(), 32U);
  const Json next = m_Agent.Call("FindNextTask", {{"handle", token}});
  EXPECT_EQ(next, (Json{{"result", 1}, {"out", {{"taskId", "next"}}}}));
  EXPECT_EQ(m_Agent.Call("FindClose", {{"handle", token}})["result"], 0);
  EXPECT_EQ(m_Agent.m_Handles.Count(), 0U);
}

// The plug-in of these tests ends the process when it gets a handle that it has not given out.
TEST_F(EnumerationHandlesTest, UnknownTokensNeverReachThePlugin) {
  const std::string token = Open();
  for (const Json& bad : {Json("1"), Json(""), Json(0), Json(std::string(32, '0')),
                          Json(token.substr(1)), Json(token + "0")}) {
    EXPECT_EQ(ErrorOf("FindNextTask", bad), "unknown-handle") << bad;
    EXPECT_EQ(ErrorOf("FindClose", bad), "unknown-handle") << bad;
  }
  for (const Json& bad :
       {Json(1), Json(true), Json(nullptr), Json(Json::List{}), Json(135678912)}) {
    EXPECT_EQ(ErrorOf("FindNextTask", bad), "mistyped-argument") << bad;
  }
  EXPECT_EQ(ErrorOf("FindNextTask", token, "two"), "unknown-handle") << "another plug-in's";
  EXPECT_EQ(ErrorOf("FindClose", token), "");
  EXPECT_EQ(ErrorOf("FindClose", token), "unknown-handle") << "closed twice";
  EXPECT_EQ(ErrorOf("FindNextTask", token), "unknown-handle");
}

TEST_F(EnumerationHandlesTest, AnEnumerationBeginsWithoutAHandle) {
  EXPECT_EQ(ErrorOf("FindFirstTask", "abc"), "handle-not-empty");
  EXPECT_EQ(ErrorOf("FindFirstTask", 0), "");
  EXPECT_EQ(ErrorOf("FindFirstTask", ""), "");
}

TEST_F(EnumerationHandlesTest, BoundsHowManyAreOpen) {
  std::set<std::string> tokens;
  for (std::size_t count = 0; count < EnumerationHandles::MaxOpen; ++count) {
    tokens.insert(Open());
  }
  EXPECT_EQ(tokens.size(), EnumerationHandles::MaxOpen);
  EXPECT_EQ(ErrorOf("FindFirstTask", ""), "too-many-enumerations");
  EXPECT_EQ(ErrorOf("FindClose", *tokens.begin()), "");
  EXPECT_EQ(ErrorOf("FindFirstTask", ""), "");
}

TEST_F(EnumerationHandlesTest, OneClientLeavesSomeToTheOthers) {
  const std::string target = "/v1/one/INoxTaskScheduler/FindFirstTask";
  const auto open = [&](long client) {
    return Json::Parse(m_Agent.Ask("POST", target, "{}", {client, false}).m_Body);
  };
  const std::string token = open(7)["out"]["handle"].Text();
  for (std::size_t count = 1; count < EnumerationHandles::MaxOfOneClient; ++count) {
    EXPECT_TRUE(open(7).Has("out")) << count;
  }
  const Json refused = open(7);
  EXPECT_EQ(refused["error"]["code"], "too-many-enumerations");
  EXPECT_NE(refused["error"]["message"].Text().find("this client (process 7) has 16 enumerations"),
            std::string::npos)
      << refused;
  EXPECT_TRUE(open(8).Has("out"));
  EXPECT_EQ(ErrorOf("FindClose", token), "");
  EXPECT_TRUE(open(7).Has("out"));
}

TEST_F(EnumerationHandlesTest, ClosesWhatClientsLeaveOpen) {
  const std::string abandoned = Open();
  const auto now = EnumerationHandles::Clock::now();
  m_Agent.m_Handles.CloseIdle(now);
  EXPECT_EQ(m_Agent.m_Handles.Count(), 1U);
  m_Agent.m_Handles.CloseIdle(now + EnumerationHandles::MaxIdle);
  EXPECT_EQ(m_Agent.m_Handles.Count(), 0U);
  EXPECT_NE(m_Agent.Report().find("closed; 0 open\n"), std::string::npos) << m_Agent.Report();
  EXPECT_EQ(ErrorOf("FindNextTask", abandoned), "unknown-handle");
}

TEST_F(EnumerationHandlesTest, ClosesAllWithTheAgent) {
  (void)Open();
  (void)Open("two");
  m_Agent.m_Handles.CloseAll();
  EXPECT_EQ(m_Agent.m_Handles.Count(), 0U);
  EXPECT_NE(m_Agent.Report("two").find("closed; 0 open\n"), std::string::npos);
}

TEST_F(EnumerationHandlesTest, OneRequestAtATimeUsesAnEnumeration) {
  const std::string token = Open();
  const auto plugin = m_Agent.m_Plugins.Find("one");
  const auto now = EnumerationHandles::Clock::now();
  {
    const EnumerationHandles::Use use(m_Agent.m_Handles, *plugin, token, now);
    EXPECT_EQ(ErrorOf("FindNextTask", token), "handle-in-use");
    EXPECT_EQ(ErrorOf("FindClose", token), "handle-in-use");
    m_Agent.m_Handles.CloseIdle(now + EnumerationHandles::MaxIdle);
    m_Agent.m_Handles.CloseAll();
    EXPECT_EQ(m_Agent.m_Handles.Count(), 1U) << "in use is not idle";
  }
  EXPECT_EQ(ErrorOf("FindClose", token), "");
}

}  // namespace
}  // namespace NoxAgent
