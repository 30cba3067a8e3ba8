// noxctl against the real agent.
#include "agent/library/Json.h"
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>

using NoxAgent::Json;

namespace {

class Client : public AgentFixture {
 protected:
  Json CtlJson(std::vector<std::string> arguments) {
    arguments.push_back("--json");
    const auto result = Ctl(arguments);
    EXPECT_EQ(result.m_Status, 0) << result.m_Error;
    return Json::Parse(result.m_Output);
  }
};

}  // namespace

TEST_F(Client, AddsATaskAndInventsItsId) {
  StartAgent();
  const auto result = Ctl({"add", "-"}, Document(Trigger(0, FromNow(3600))));
  EXPECT_EQ(result.m_Status, 0) << result.m_Error;
  EXPECT_EQ(result.m_Output.find("corvane_task_"), 0u) << result.m_Output;
  const std::string id = result.m_Output.substr(0, result.m_Output.find('\n'));
  EXPECT_FALSE(TaskFile(id).empty());
}

TEST_F(Client, AddsATaskFromAFile) {
  StartAgent();
  m_Directory.Write("task.xml", Document(Trigger(0, FromNow(3600))));
  EXPECT_EQ(Ctl({"add", Path("task.xml"), "--id", "a"}).m_Status, 0);
  EXPECT_EQ(TaskFile("a"), m_Directory.Read("task.xml"));
}

TEST_F(Client, AddsManyFilesUnderTheirNames) {
  StartAgent();
  const std::string document = Document(Trigger(0, FromNow(3600)));
  std::vector<std::string> arguments = {"add"};
  for (const char* const name : {"a.xml", "b.vsk", "c.xml"}) {
    m_Directory.Write(name, document);
    arguments.push_back(Path(name));
  }
  std::filesystem::create_directory(m_Directory / "state/var/tasks/b.vsk");
  auto result = Ctl(arguments);
  EXPECT_EQ(result.m_Status, 1);
  EXPECT_EQ(result.m_Output, "a\nc\n");
  EXPECT_NE(result.m_Error.find(Path("b.vsk") + ": the agent refuses: the task b was not added"),
            std::string::npos)
      << result.m_Error;
  EXPECT_EQ(TaskFile("a"), document);
  EXPECT_EQ(TaskFile("c"), document);
  std::filesystem::remove(m_Directory / "state/var/tasks/b.vsk");
  result = Ctl(arguments);
  EXPECT_EQ(result.m_Status, 0) << result.m_Error;
  EXPECT_EQ(result.m_Output, "a\nb\nc\n");
  EXPECT_EQ(TaskFile("b"), document);
}

TEST_F(Client, AddsNoneOfManyFilesWhenTheAgentRefusesOne) {
  StartAgent();
  std::string document = Document(Trigger(0, FromNow(3600)));
  m_Directory.Write("a.xml", document);
  document.replace(document.find("{"), 3, "{00");
  m_Directory.Write("b.xml", document);
  const auto result = Ctl({"add", Path("a.xml"), Path("b.xml")});
  EXPECT_EQ(result.m_Status, 2);
  EXPECT_EQ(result.m_Output, "");
  EXPECT_NE(result.m_Error.find(Path("b.xml") + ": the agent refuses: no plug-in has the handler"),
            std::string::npos)
      << result.m_Error;
  EXPECT_EQ(TaskFile("a"), "");
}

TEST_F(Client, RefusesADocumentThatWouldNeverRunUnlessForced) {
  StartAgent();
  const auto refused = Ctl({"add", "-", "--id", "a"}, Document(""));
  EXPECT_EQ(refused.m_Status, 2);
  EXPECT_FALSE(refused.m_Error.empty());
  EXPECT_EQ(TaskFile("a"), "");
  EXPECT_EQ(Ctl({"add", "-", "--id", "a", "--force"}, Document("")).m_Status, 0);
}

TEST_F(Client, NamesLineAndColumnOfADocumentThatIsNotWellFormed) {
  StartAgent();
  const auto result = Ctl({"add", "-", "--id", "a"}, "<Task>\n  <Schedule>\n</Task>");
  EXPECT_EQ(result.m_Status, 2);
  EXPECT_NE(result.m_Error.find("3"), std::string::npos) << result.m_Error;
  EXPECT_EQ(TaskFile("a"), "");
}

TEST_F(Client, ListsTasksWithTheirRuns) {
  StartAgent();
  AddAsapTask("good", "exit 0");
  AddAsapTask("bad", "exit 1");
  AddTask("later", Trigger(0, FromNow(3600)));
  ASSERT_TRUE(WaitForState("good", "Ok"));
  ASSERT_TRUE(WaitForState("bad", "Failed"));
  const Json list = CtlJson({"list"});
  ASSERT_EQ(list.Items().size(), 3u) << list;
  EXPECT_EQ(list.At(0)["id"], "bad");
  EXPECT_EQ(list.At(0)["state"], "Failed");
  EXPECT_EQ(list.At(1)["id"], "good");
  EXPECT_EQ(list.At(1)["state"], "Ok");
  EXPECT_EQ(list.At(2)["id"], "later");
  EXPECT_EQ(list.At(2)["enabled"], true);
}

TEST_F(Client, ShowsADocumentAsItIsStored) {
  StartAgent();
  AddTask("a", Trigger(0, FromNow(3600)));
  const auto result = Ctl({"show", "a"});
  EXPECT_EQ(result.m_Status, 0);
  EXPECT_EQ(result.m_Output.find(TaskFile("a")), 0u) << result.m_Output;
  EXPECT_EQ(Ctl({"show", "b"}).m_Status, 1);
}

TEST_F(Client, DeletesTasks) {
  StartAgent();
  AddTask("a", Trigger(0, FromNow(3600)));
  EXPECT_EQ(Ctl({"delete", "a"}).m_Status, 0);
  EXPECT_EQ(TaskFile("a"), "");
  EXPECT_EQ(Ctl({"delete", "a"}).m_Status, 1);
  EXPECT_TRUE(CtlJson({"list"}).Items().empty());
}

TEST_F(Client, DisablesAndEnablesTasks) {
  StartAgent();
  // Nothing is run before it is over, however long the client takes.
  EXPECT_EQ(Ctl({"notify", "1"}).m_Status, 0);
  AddJob("a", "echo run >> runs");
  AddTask("a", Trigger(0, FromNow(0)));
  EXPECT_EQ(Ctl({"disable", "a"}).m_Status, 0);
  EXPECT_EQ(CtlJson({"list"}).At(0)["enabled"], false);
  EXPECT_NE(TaskFile("a").find("<Task Enabled=\"0\">"), std::string::npos);
  // Another one that was due later has run: this one would have.
  AddJob("b", "exit 0");
  AddTask("b", Trigger(0, FromNow(0)));
  EXPECT_EQ(Ctl({"notify", "2"}).m_Status, 0);
  ASSERT_TRUE(WaitForState("b", "Ok"));
  EXPECT_EQ(LastRun("a"), "");
  EXPECT_EQ(Ctl({"enable", "a"}).m_Status, 0);
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_EQ(CountLines("runs"), 1u);
}

TEST_F(Client, ATaskThatIsDisabledForAWhileComesBackByItself) {
  StartAgent();
  AddTask("a", Trigger(0, FromNow(3600)));
  // The moment may be over before it has come to the agent, who refuses it then.
  ASSERT_TRUE(WaitUntil([&] { return Ctl({"disable", "a", "--for", "2s"}).m_Status == 0; }));
  ASSERT_TRUE(WaitUntil([&] {
    return m_Agent->Output().find("The task a is enabled again: the time") != std::string::npos;
  }));
  EXPECT_NE(TaskFile("a").find("<Task Enabled=\"1\">"), std::string::npos);
  EXPECT_EQ(CtlJson({"list"}).At(0)["returns"], Json());
  EXPECT_EQ(CtlJson({"list"}).At(0)["enabled"], true);
}

TEST_F(Client, ATaskComesBackThoughTheAgentWasKilledMeanwhile) {
  StartAgent();
  for (const char* const id : {"a", "b", "c"}) {
    AddTask(id, Trigger(0, FromNow(3600)));
  }
  EXPECT_EQ(Ctl({"disable", "a", "b", "c", "--for", "1h"}).m_Status, 0);
  EXPECT_EQ(Ctl({"disable", "c"}).m_Status, 0);
  KillAgent();
  EXPECT_EQ(TaskFile("a").find("<Task Enabled=\"0\">"), 0u);
  // As if the hour of the first one were over.
  std::string returns = m_Directory.Read("state/var/returns");
  const std::size_t digits = returns.find(" a\n");
  ASSERT_NE(digits, std::string::npos) << returns;
  m_Directory.Write("state/var/returns", "1000000000" + returns.substr(digits));
  StartAgent();
  ASSERT_TRUE(WaitUntil([&] { return TaskFile("a").find("<Task Enabled=\"1\">") == 0; }));
  const Json list = CtlJson({"list"});
  EXPECT_EQ(list.At(0)["enabled"], true);
  EXPECT_EQ(list.At(1)["enabled"], false);
  EXPECT_TRUE(list.At(1)["returns"].IsObject());
  EXPECT_EQ(list.At(2)["enabled"], false);
  EXPECT_EQ(list.At(2)["returns"], Json());
}

TEST_F(Client, KeepsTheHistoryOfATaskThatIsReplaced) {
  StartAgent();
  AddAsapTask("a", "exit 0");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  const std::string run = LastRun("a");
  AddTask("a", Trigger(0, FromNow(3600)));
  EXPECT_EQ(LastRun("a"), run);
  EXPECT_NE(TaskFile("a").find("BeginDate"), std::string::npos);
}

TEST_F(Client, RecordsAState) {
  StartAgent();
  AddAsapTask("a", "exit 0");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  EXPECT_EQ(Ctl({"set-state", "a", "Checked"}).m_Status, 0);
  EXPECT_EQ(State("a"), "Checked");
  EXPECT_NE(Ctl({"set-state", "a", "two words"}).m_Status, 0);
  EXPECT_EQ(State("a"), "Checked");
}

TEST_F(Client, TellsAttributes) {
  StartAgent();
  AddAsapTask("a", "exit 0");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  const auto result = Ctl({"attributes", "a"});
  EXPECT_EQ(result.m_Status, 0);
  EXPECT_NE(result.m_Output.find("Run as soon as possible"), std::string::npos) << result.m_Output;
}

TEST_F(Client, RefreshesAndNotifies) {
  StartAgent({"--log-level", "trace"});
  EXPECT_EQ(Ctl({"refresh"}).m_Status, 0);
  EXPECT_TRUE(m_Agent->WaitForOutput("Policy Refresh Started."));
  EXPECT_TRUE(m_Agent->WaitForOutput("Policy Refresh finished."));
  EXPECT_EQ(Ctl({"notify", "10", "302", "power"}).m_Status, 0);
  EXPECT_TRUE(m_Agent->WaitForOutput("Received 302 subscribed notification: power"));
  EXPECT_EQ(Ctl({"notify", "4", "0", "thing"}).m_Status, 0);
  EXPECT_TRUE(m_Agent->WaitForOutput("Number of Install/Uninstall tasks: 1."));
  EXPECT_EQ(Ctl({"notify", "5", "0", "thing"}).m_Status, 0);
  EXPECT_TRUE(m_Agent->WaitForOutput("Finished plugin thing registration"));
}

TEST_F(Client, WatchesRunsAsTheyHappen) {
  StartAgent();
  const auto output = m_Directory / "watch.out";
  Program watch(
      {{NOX_CLIENT, "--runtime-dir", Path("state/run"), "watch", "--runs", "2", "--json"}}, output);
  ASSERT_TRUE(WaitUntil([&] { return CtlJson({"status"})["streams"] == 1; }));
  AddAsapTask("a", "exit 0");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  AddAsapTask("b", "exit 1");
  EXPECT_EQ(watch.WaitForEnd(), 0) << watch.Output();
  std::istringstream lines(watch.Output());
  std::vector<std::string> events;
  for (std::string line; std::getline(lines, line);) {
    const Json event = Json::Parse(line);
    events.push_back(event["task"].Text() + " " + event["event"].Text() + " " +
                     event.Text("state", ""));
  }
  EXPECT_EQ(events,
            (std::vector<std::string>{"a added ", "a started Started", "a finished Ok", "b added ",
                                      "b started Started", "b finished Failed"}));
}

TEST_F(Client, SaysInOneLineThatThereIsNoAgent) {
  const auto result = Ctl({"list"});
  EXPECT_EQ(result.m_Status, 3);
  EXPECT_EQ(std::count(result.m_Error.begin(), result.m_Error.end(), '\n'), 1) << result.m_Error;
  EXPECT_EQ(result.m_Output, "");
}
