#include "agent/daemon/plugins/TaskGate.h"

#include "agent/daemon/plugins/NotificationCenter.h"
#include "tests/agent/daemon/TestAgent.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Texts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using BaseSDK::ALogger;
using TestSupport::Texts;

namespace NoxAgent {
namespace {

using Kind = NotificationCenter::Kind;

struct Told {
  long m_Kind;
  const char* m_Text = "";
};

// What is said of these notifications, a line each.
std::string WordsOf(const std::vector<Told>& notifications) {
  TaskGate gate;
  std::string words;
  for (const Told& told : notifications) {
    if (const auto change = gate.After(told.m_Kind, told.m_Text)) {
      words += change->m_Words.ToUtf8() + "\n";
    }
  }
  return words;
}

TEST(TaskGate, TellsEachChangeOnceAndWhy) {
  EXPECT_EQ(WordsOf({{Kind::RegistrationStarted, "a"},
                     {Kind::RegistrationStarted, "b"},
                     {Kind::RegistrationFinished, "a"},
                     {Kind::RegistrationFinished, "b"},
                     {Kind::StartUpFinished},
                     {Kind::RefreshStarted},
                     {Kind::RefreshFinished},
                     {Kind::Subscribed, "x"},
                     {3},
                     {Kind::UnregistrationStarted, "b"},
                     {Kind::UnregistrationStarted, "a"},
                     {Kind::UnregistrationFinished, "b"},
                     {Kind::UnregistrationFinished, "a"}}),
            "Tasks are held back: the plug-in a is being loaded\n"
            "Tasks may run: all plug-ins are loaded\n"
            "Tasks are held back: a policy refresh has started\n"
            "Tasks may run: the policy refresh is over\n"
            "Tasks are held back: the plug-in b is being unloaded\n"
            "Tasks may run: no plug-in is being unloaded any more\n");
}

TEST(TaskGate, StartUpAndRefreshEndTheWaitWhoeverIsComing) {
  EXPECT_EQ(WordsOf({{Kind::RegistrationStarted, "a"}, {Kind::StartUpFinished}}),
            "Tasks are held back: the plug-in a is being loaded\n"
            "Tasks may run: all plug-ins are loaded\n");
  EXPECT_EQ(WordsOf({{Kind::UnregistrationStarted, "a"}, {Kind::RefreshFinished}}),
            "Tasks are held back: the plug-in a is being unloaded\n"
            "Tasks may run: the policy refresh is over\n");
}

// Kept on purpose: a scheduler's count wraps, and what is told of it is what it does.
TEST(TaskGate, AnEndWithoutABeginLetsNothingRun) {
  EXPECT_EQ(WordsOf({{Kind::RefreshStarted},
                     {Kind::RegistrationFinished, "a"},
                     {Kind::RegistrationStarted, "a"},
                     {Kind::RegistrationFinished, "a"}}),
            "Tasks are held back: a policy refresh has started\n");
}

Texts TaskLines(const TestSupport::LogCapture& log) {
  Texts lines;
  for (const std::string& message : log.Messages(ALogger::Information)) {
    if (message.starts_with("Tasks ")) {
      lines.push_back(message);
    }
  }
  return lines;
}

TEST(TaskGate, IsToldOfInTheLogForSchedulersAlone) {
  TestSupport::LogCapture log;
  TestAgent agent;
  agent.Add("one").Add("other", {}, "MinimalPlugin").Load();
  EXPECT_EQ(TaskLines(log), (Texts{"Tasks are held back: the plug-in other is being loaded",
                                   "Tasks may run: all plug-ins are loaded"}));
  log.Clear();
  EXPECT_EQ(agent.Ask("POST", "/v1/refresh").m_Status, 200U);
  EXPECT_EQ(TaskLines(log), (Texts{"Tasks are held back: a policy refresh has started",
                                   "Tasks may run: the policy refresh is over"}));
  log.Clear();
  EXPECT_TRUE(agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(TaskLines(log), Texts{"Tasks are held back: the plug-in other is being unloaded"});
}

}  // namespace
}  // namespace NoxAgent
