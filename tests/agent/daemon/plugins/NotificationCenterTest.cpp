#include "agent/daemon/plugins/NotificationCenter.h"

#include "tests/agent/daemon/TestAgent.h"

#include <gtest/gtest.h>

namespace NoxAgent {
namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(NotificationCenter, TellsSubscribersWhatOthersPost) {
  TestAgent agent;
  agent.Add("one", "subscribe=300,302\n").Add("two", "subscribe=101\n").Load();
  (void)agent.Call("DeleteTask", {{"taskId", "gone"}});
  agent.Settle();
  EXPECT_TRUE(Contains(agent.Report("two"), "kind 10 code 101 text gone\n")) << agent.Report("two");
  EXPECT_FALSE(Contains(agent.Report("one"), "kind 10")) << agent.Report("one");
}

TEST(NotificationCenter, ReachesPluginsOnTheAgentThreadOnlyWhoeverAsks) {
  TestAgent agent;
  agent.Add("one", "subscribe=300\n").Load();
  EXPECT_EQ(agent.Ask("POST", "/v1/notify", R"({"kind":10,"code":300,"text":"x"})").m_Status, 200U);
  EXPECT_EQ(agent.Ask("POST", "/v1/notify", R"({"kind":6})").m_Status, 200U);
  const ApiResponse direct = agent.Ask("POST", "/v1/one/INoxObject/NotifyObject",
                                       R"({"kind":8,"code":9,"text":"direct"})");
  EXPECT_EQ(direct.m_Body, R"({"out":{},"result":0})");
  agent.Settle();
  const std::string report = agent.Report();
  EXPECT_TRUE(Contains(report, "kind 10 code 300 text x\n")) << report;
  EXPECT_TRUE(Contains(report, "kind 6 code 0 text \n")) << report;
  EXPECT_TRUE(Contains(report, "kind 8 code 9 text direct\n")) << report;
  EXPECT_FALSE(Contains(report, "on another thread")) << report;
}

TEST(NotificationCenter, SubscribingTwiceIsSubscribingOnce) {
  TestAgent agent;
  agent.Add("one", "subscribe=300\n").Load();
  agent.m_Notifications.Subscribe(agent.m_Plugins.Find("one"), {300});
  ASSERT_TRUE(agent.m_Notifications.Post(300, "x"));
  agent.Settle();
  const std::string report = agent.Report();
  const std::string line = "kind 10 code 300";
  EXPECT_EQ(report.find(line), report.rfind(line)) << report;
}

TEST(NotificationCenter, ListenersHearEveryPostUntilTheyAreRemoved) {
  TestAgent agent;
  std::vector<long> heard;
  const unsigned number = agent.m_Notifications.AddListener(
      [&](const NotificationCenter::Notification& n) { heard.push_back(n.m_Code); });
  (void)agent.m_Notifications.Post(100, "a");
  (void)agent.m_Notifications.Post(7, "b");
  agent.Settle();
  agent.m_Notifications.RemoveListener(number);
  (void)agent.m_Notifications.Post(102, "c");
  agent.Settle();
  EXPECT_EQ(heard, (std::vector<long>{100, 7}));
  EXPECT_EQ(agent.m_Notifications.Posted(), 3U);
}

}  // namespace
}  // namespace NoxAgent
