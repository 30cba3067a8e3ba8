#include "agent/daemon/control/DisableRoute.h"

#include "agent/daemon/returns/TaskReturner.h"
#include "tests/agent/daemon/TestAgent.h"
#include "tests/support/Texts.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

using TestSupport::Texts;

namespace NoxAgent {
namespace {

constexpr long Hour = 3600;

// Disabling for a while, and what becomes of it. Time does not pass: who comes back is asked with
// the moment as it will be.
class DisableRouteTest : public testing::Test {
 protected:
  DisableRouteTest() : m_Until(static_cast<long>(std::time(nullptr)) + Hour) {
    m_Agent.AddScheduler().Add("handler");
    for (const char* const id : {"a", "b"}) {
      m_Agent.m_Dir.Write(std::string("state/tasks/") + id + ".vsk", TestAgent::DailyTask);
    }
    m_Agent.m_Returns.Open(ReturnsPath());
    m_Agent.Load();
  }

  std::string ReturnsPath() const { return (m_Agent.m_Dir / "returns").string(); }
  Json Disable(const Json& body) {
    return Json::Parse(m_Agent.Ask("POST", "/v1/tasks/disable", body.Dump()).m_Body);
  }
  Json DisableUntil(const Texts& ids, long until) {
    return Disable({{"taskIds", ids}, {"until", until}});
  }
  std::string ErrorOf(const Json& body) { return Disable(body).At("error").At("code").Text(); }
  Json Call(const std::string& operation, const Json& arguments) {
    return m_Agent.Call(operation, arguments, "scheduler");
  }
  bool IsEnabled(const std::string& id) {
    const Json answer = Call("GetTaskAttributes", {{"taskId", id}});
    return answer.At("out").At("attributes").At("t5") == "1";
  }
  bool IsEnabledInFile(const std::string& id) {
    const std::string file = m_Agent.m_Dir.Read("state/tasks/" + id + ".vsk");
    return file.find("Enabled=\"0\"") == std::string::npos;
  }
  std::optional<long> ReturnOf(const std::string& id) { return m_Agent.m_Returns.Find(id); }
  void PassTo(long moment) { m_Agent.m_Returner.EnableDue(moment); }

  const long m_Until;
  TestAgent m_Agent;
};

TEST_F(DisableRouteTest, ATaskComesBackAtItsMoment) {
  EXPECT_EQ(DisableUntil({"a"}, m_Until), (Json{{"tasks", Json::List{{{"taskId", "a"}}}}}));
  EXPECT_FALSE(IsEnabled("a"));
  EXPECT_TRUE(IsEnabled("b"));
  EXPECT_EQ(m_Agent.m_Dir.Read("returns"), std::to_string(m_Until) + " a\n");
  PassTo(m_Until - 1);
  EXPECT_FALSE(IsEnabled("a"));
  PassTo(m_Until);
  EXPECT_TRUE(IsEnabled("a"));
  EXPECT_TRUE(IsEnabledInFile("a"));
  EXPECT_EQ(m_Agent.m_Dir.Read("returns"), "");
}

TEST_F(DisableRouteTest, EachTaskHasItsOwnMoment) {
  (void)DisableUntil({"a", "b"}, m_Until);
  (void)DisableUntil({"b"}, m_Until + Hour);
  PassTo(m_Until);
  EXPECT_TRUE(IsEnabled("a"));
  EXPECT_FALSE(IsEnabled("b")) << "the later word counts";
  PassTo(m_Until + Hour);
  EXPECT_TRUE(IsEnabled("b"));
}

TEST_F(DisableRouteTest, ATaskThatIsDisabledAlreadyComesBackToo) {
  (void)Call("EnableTask", {{"taskIds", "a"}, {"enable", false}});
  EXPECT_EQ(DisableUntil({"a"}, m_Until), (Json{{"tasks", Json::List{{{"taskId", "a"}}}}}));
  PassTo(m_Until);
  EXPECT_TRUE(IsEnabled("a"));
}

TEST_F(DisableRouteTest, AnUnknownTaskDoesNotKeepTheOthersBack) {
  const Json tasks = DisableUntil({"none", "a"}, m_Until)["tasks"];
  EXPECT_EQ(tasks.At(0)["taskId"], "none");
  EXPECT_EQ(tasks.At(0)["error"]["code"], "unknown-task");
  EXPECT_EQ(tasks.At(1), (Json{{"taskId", "a"}}));
  EXPECT_FALSE(IsEnabled("a"));
  EXPECT_EQ(ReturnOf("none"), std::nullopt);
}

TEST_F(DisableRouteTest, TellsOfEachIdInItsPlaceAlsoOfOneThatComesTwice) {
  const Json tasks = DisableUntil({"b", "none", "a", "none", "b"}, m_Until)["tasks"];
  ASSERT_EQ(tasks.Items().size(), 5U);
  for (const unsigned known : {0U, 2U, 4U}) {
    EXPECT_FALSE(tasks.At(known).Has("error")) << tasks;
  }
  for (const unsigned unknown : {1U, 3U}) {
    EXPECT_EQ(tasks.At(unknown)["error"]["code"], "unknown-task") << tasks;
  }
  EXPECT_EQ(tasks.At(4)["taskId"], "b");
}

TEST_F(DisableRouteTest, RefusesBadRequestsAndDisablesNothing) {
  const long now = static_cast<long>(std::time(nullptr));
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a"}}, {"until", now}}), "bad-moment");
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a"}}, {"until", "soon"}}), "mistyped-argument");
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a"}}}), "missing-argument");
  EXPECT_EQ(ErrorOf({{"until", m_Until}}), "missing-argument");
  EXPECT_EQ(ErrorOf({{"taskIds", "a"}, {"until", m_Until}}), "mistyped-argument");
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a", 1}}, {"until", m_Until}}), "mistyped-argument");
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a", "b c"}}, {"until", m_Until}}), "bad-task-id");
  EXPECT_TRUE(IsEnabled("a"));
  EXPECT_EQ(ReturnOf("a"), std::nullopt);
}

TEST_F(DisableRouteTest, DisablesNothingThatCouldNotComeBackAfterACrash) {
  std::filesystem::create_directory(ReturnsPath());
  EXPECT_EQ(ErrorOf({{"taskIds", Json::List{"a"}}, {"until", m_Until}}), "not-written");
  EXPECT_TRUE(IsEnabled("a"));
  EXPECT_EQ(ReturnOf("a"), std::nullopt);
}

TEST_F(DisableRouteTest, WhatAClientSaysNextTakesThePlaceOfTheReturn) {
  const Json::Object replacement = {{"taskId", "a"}, {"taskXml", TestAgent::DailyTask}};
  const struct {
    const char* m_Operation;
    Json m_Arguments;
  } rows[] = {{"EnableTask", {{"taskIds", "b:a"}, {"enable", true}}},
              {"EnableTask", {{"taskIds", "a"}, {"enable", false}}},
              {"AddTask", Json(replacement)},
              {"DeleteTask", {{"taskId", "a"}}}};
  for (const auto& [operation, arguments] : rows) {
    (void)DisableUntil({"a"}, m_Until);
    ASSERT_EQ(ReturnOf("a"), m_Until) << operation;
    (void)Call(operation, arguments);
    EXPECT_EQ(ReturnOf("a"), std::nullopt) << operation << arguments;
    EXPECT_EQ(m_Agent.m_Dir.Read("returns"), "") << operation;
  }
}

TEST_F(DisableRouteTest, AnEditLeavesTheReturnOfATaskThatStaysDisabled) {
  const auto edit = [this](const std::string& attributes) {
    const Json document = Call("GetTaskXML", {{"taskId", "a"}}).At("out").At("taskXml");
    const std::string text = "<Task " + attributes + ">" + TestAgent::DailyTask.substr(6);
    const Json task = {{"taskId", "a"}, {"taskXml", text}, {"replaces", document}};
    const ApiResponse answer =
        m_Agent.Ask("POST", "/v1/tasks/add", Json{{"tasks", Json::List{task}}}.Dump());
    EXPECT_FALSE(Json::Parse(answer.m_Body).At("tasks").At(0).Has("error")) << answer.m_Body;
  };
  (void)DisableUntil({"a"}, m_Until);
  edit("Enabled=\"0\" Note=\"mine\"");
  EXPECT_EQ(ReturnOf("a"), m_Until);
  PassTo(m_Until);
  EXPECT_TRUE(IsEnabled("a"));

  (void)DisableUntil({"a"}, m_Until);
  edit("Enabled=\"1\"");
  EXPECT_TRUE(IsEnabled("a"));
  EXPECT_EQ(ReturnOf("a"), std::nullopt);
}

TEST_F(DisableRouteTest, AnotherOperationLeavesTheReturn) {
  (void)DisableUntil({"a"}, m_Until);
  (void)Call("GetTaskXML", {{"taskId", "a"}});
  (void)Call("SetRunState", {{"taskId", "a"}, {"runState", "Ok"}});
  (void)Call("EnableTask", {{"taskIds", "b"}, {"enable", false}});
  (void)Call("DeleteTask", {{"taskId", "b"}});
  EXPECT_EQ(ReturnOf("a"), m_Until);
}

TEST_F(DisableRouteTest, ATaskThatIsGoneIsForgotten) {
  (void)DisableUntil({"a"}, m_Until);
  std::filesystem::remove(m_Agent.m_Dir / "state/tasks/a.vsk");
  PassTo(m_Until);
  EXPECT_EQ(ReturnOf("a"), std::nullopt);
}

TEST_F(DisableRouteTest, ATaskThatIsNotReadYetIsTriedAgain) {
  m_Agent.m_Returns.Put({"late"}, m_Until);
  m_Agent.m_Dir.Write("state/tasks/late.vsk",
                      "<Task Enabled=\"0\">" + TestAgent::DailyTask.substr(6));
  PassTo(m_Until);
  EXPECT_EQ(ReturnOf("late"), m_Until);
  EXPECT_EQ(m_Agent.m_Returner.Pause(m_Until, 5000), 1000U);
}

TEST_F(DisableRouteTest, WaitsForTheNextReturnAndNoLongerThanItMay) {
  EXPECT_EQ(m_Agent.m_Returner.Pause(0, 5000), 5000U);
  m_Agent.m_Returns.Put({"a"}, m_Until);
  m_Agent.m_Returns.Put({"b"}, m_Until + Hour);
  EXPECT_EQ(m_Agent.m_Returner.Pause(m_Until - Hour, 5000), 5000U);
  EXPECT_EQ(m_Agent.m_Returner.Pause(m_Until - 2, 5000), 2000U);
}

TEST_F(DisableRouteTest, TheListTellsWhenADisabledTaskComesBack) {
  (void)DisableUntil({"a"}, m_Until);
  m_Agent.m_Returns.Put({"b"}, m_Until);  // as a crash before it is disabled leaves it
  const ApiResponse answer = m_Agent.Ask("GET", "/v1/tasks");
  const std::string lines = answer.m_Parts();
  EXPECT_EQ(Json::Parse(lines.substr(0, lines.find('\n')))["returns"], m_Until);
  EXPECT_FALSE(Json::Parse(lines.substr(lines.find('\n') + 1)).Has("returns"));
  EXPECT_EQ(Json::Parse(m_Agent.Ask("GET", "/v1/tasks?id=a").m_Parts())["returns"], m_Until);
  PassTo(m_Until);
  EXPECT_EQ(ReturnOf("b"), std::nullopt);
}

TEST(DisableRoute, AnAgentWithoutASchedulerHasNothingToDisable) {
  TestAgent agent;
  agent.Add("one").Load();
  EXPECT_EQ(
      agent.Ask("POST", "/v1/tasks/disable", R"({"taskIds":["a"],"until":2000000000})").m_Status,
      404U);
}

}  // namespace
}  // namespace NoxAgent
