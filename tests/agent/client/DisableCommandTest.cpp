// noxctl disable for a while, against an agent that answers from memory.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

namespace {

class DisableCommand : public Client {
 protected:
  DisableCommand() {
    for (const char* const id : {"a", "b"}) {
      m_Agent.SetTask(id, {TaskXml(NowTrigger, "", "0"), true, {{"t5", "1"}}});
    }
  }

  // The moment that the agent was last told; nothing when it was told none.
  Json LastMoment() const {
    Json moment;
    for (const FakeRequest& request : m_Agent.Requests()) {
      moment = request.m_Target == "/v1/tasks/disable" ? request.m_Body.At("until") : moment;
    }
    return moment;
  }
};

}  // namespace

TEST_F(DisableCommand, TakesHowLong) {
  EXPECT_EQ(0, Run({"disable", "a", "b", "--for", "2h"})) << Err();
  EXPECT_EQ(
      "disabled a until 2026-06-15 16:00:00 +0200\n"
      "disabled b until 2026-06-15 16:00:00 +0200\n",
      Out());
  const struct {
    const char* m_Text;
    long m_Seconds;
  } rows[] = {{"30s", 30},    {"10m", 600},      {"1h30m", 5400},
              {"3d", 259200}, {"1d12h", 129600}, {"9999d", 2147483647 - Now}};
  for (const auto& [text, seconds] : rows) {
    EXPECT_EQ(0, Run({"disable", "a", "--for", text})) << text << Err();
    EXPECT_EQ(Json(Now + seconds), LastMoment()) << text;
  }
}

TEST_F(DisableCommand, TakesUntilWhenInTheAgentsLocalTime) {
  EXPECT_EQ(0, Run({"disable", "a", "--until", "2026-06-15 14:30", "--json"})) << Err();
  const Json moment = {{"seconds", Now + 1800}, {"local", "2026-06-15 14:30:00 +0200"}};
  EXPECT_EQ(Json({{"disabled", Json::List{"a"}}, {"until", moment}}), JsonOut());
  m_Agent.SetStatus({{"zone", "EST5EDT,M3.2.0,M11.1.0"}});
  EXPECT_EQ(0, Run({"disable", "a", "--until", "2026-06-15T14:30"})) << Err();
  EXPECT_EQ("disabled a until 2026-06-15 14:30:00 -0400\n", Out());
  EXPECT_EQ(Json(Now + 23400), LastMoment());
}

TEST_F(DisableCommand, TheListTellsUntilWhen) {
  EXPECT_EQ(0, Run({"disable", "a", "--for", "2h"})) << Err();
  EXPECT_EQ(0, Run({"list"})) << Err();
  EXPECT_EQ(
      "ID  ENABLED                 STATE  LAST RUN  NEXT RUN  LATE\n"
      "a   until 2026-06-15 16:00  -      never     -         no\n"
      "b   no                      -      never     -         no\n",
      Out());
  EXPECT_EQ(0, Run({"list", "--json"})) << Err();
  EXPECT_EQ(Json({{"seconds", Now + 7200}, {"local", "2026-06-15 16:00:00 +0200"}}),
            JsonOut().At(0).At("returns"));
  EXPECT_EQ(Json(), JsonOut().At(1).At("returns"));
}

TEST_F(DisableCommand, GoesOnAfterATaskThatCannotBeDisabled) {
  m_Agent.FailToAdd("b");
  EXPECT_EQ(1, Run({"disable", "none", "b", "a", "--for", "2h"}));
  EXPECT_EQ("disabled a until 2026-06-15 16:00:00 +0200\n", Out());
  EXPECT_NE(std::string::npos, Err().find("the scheduler does not hold a task none")) << Err();
  EXPECT_NE(std::string::npos, Err().find("the disk is full")) << Err();
}

TEST_F(DisableCommand, RefusesWhatIsNoTimeToCome) {
  const struct {
    std::vector<std::string> m_Options;
    const char* m_Error;
  } rows[] = {{{"--for", "2x"}, "--for \"2x\" cannot be read"},
              {{"--for", "0s"}, "--for \"0s\" cannot be read"},
              {{"--for", "0d"}, "--for \"0d\" cannot be read"},
              {{"--for", "d"}, "--for \"d\" cannot be read"},
              {{"--for", "1d2x"}, "--for \"1d2x\" cannot be read"},
              {{"--for", ""}, "--for: a time is to follow"},
              {{"--until", ""}, "--until: a time is to follow"},
              {{"--until", "soon"}, "--until \"soon\" cannot be read"},
              {{"--until", "2026-06-15 14:00"}, "is over already"},
              {{"--for", "2h", "--until", "2027-01-01"}, "--for and --until exclude each other"}};
  for (const auto& [options, error] : rows) {
    std::vector<std::string> words = {"disable", "a"};
    words.insert(words.end(), options.begin(), options.end());
    EXPECT_EQ(2, Run(words)) << error;
    ExpectError(error);
    EXPECT_EQ(Json(), LastMoment()) << error;
  }
}

}  // namespace NoxAgentTest
