// What the agent's log tells its operator.
#include "tests/agent/e2e/AgentFixture.h"

#include <sstream>

namespace {

class Log : public AgentFixture {
 protected:
  /// Each line's level and message, without time, channel and place in the source.
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    std::istringstream log(m_Agent->Output());
    for (std::string line; std::getline(log, line);) {
      const std::size_t level = line.find(' ', line.find(' ') + 1) + 1;
      const std::size_t channel = line.find(' ', level);
      const std::size_t message = line.find(": ", channel);
      const std::string text = line.substr(message + 2, line.rfind(" (") - message - 2);
      lines.push_back(line.substr(level, channel - level) + ": " + text);
    }
    return lines;
  }
};

}  // namespace

// What is said by default, and that nothing of the plug-ins' own is, unless it is a warning.
TEST_F(Log, TellsOfStartRunAndStopInTheAgentsWords) {
  StartAgent();
  AddAsapTask("a", "echo said by a job");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  ASSERT_EQ(StopAgent(), 0);
  const std::vector<std::string> lines = Lines();
  const std::vector<std::string> expected = {
      "information: noxagentd ",
      "information: Loaded the plug-in scheduler from ",
      "information: Tasks are held back: the plug-in command is being loaded",
      "information: Loaded the plug-in command from ",
      "information: Tasks may run: all plug-ins are loaded",
      "information: Serving requests on ",
      "information: Task 'a' started: ",
      "information: Task 'a': said by a job",
      "information: Task 'a' succeeded: exit status 0 after ",
      "information: Stopping",
      "information: Tasks are held back: the plug-in command is being unloaded",
      "information: Unloaded the plug-in command",
      "information: Unloaded the plug-in scheduler",
  };
  ASSERT_EQ(lines.size(), expected.size()) << m_Agent->Output();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].compare(0, expected[i].size(), expected[i]), 0) << lines[i];
  }
}

TEST_F(Log, HasAllOfTheSchedulersWordsAtTheLevelOfItsChannel) {
  m_Directory.Write("agent.ini", "");
  StartAgent({"--config", Path("agent.ini")});
  m_Directory.Write("agent.ini", "[LogLevels]\nCorvane::Agent::TaskScheduler = trace\n");
  ASSERT_EQ(Ctl({"refresh"}).m_Status, 0);
  AddAsapTask("a", "exit 0");
  EXPECT_TRUE(m_Agent->WaitForOutput("Task ID = a was RUN on "));
  EXPECT_EQ(m_Agent->Output().find("Number of Install/Uninstall tasks"), std::string::npos)
      << "before the refresh";
}

TEST_F(Log, WarnsOfTasksWhoseHandlerIsNotThere) {
  m_Directory.Write("agent.ini", "[Plugin scheduler]\n");
  StartAgent({"--config", Path("agent.ini")});
  ASSERT_EQ(Ctl({"add", "-", "--id", "a", "--force"}, Document("<Trigger Type='-1'/>")).m_Status,
            0);
  EXPECT_TRUE(m_Agent->WaitForOutput(
      "Tasks of the handler {7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10} are due, but no plug-in"));
}

TEST_F(Log, IsSparedJobsOutputByTheAgentsSetting) {
  for (const bool logged : {true, false}) {
    m_Directory.Write("agent.ini",
                      std::string("[Log]\njob_output = ") + (logged ? "yes\n" : "no\n"));
    StartAgent({"--config", Path("agent.ini")});
    const std::string id = logged ? "loud" : "quiet";
    AddAsapTask(id, "echo said by a job");
    ASSERT_TRUE(WaitForState(id, "Ok"));
    EXPECT_EQ(StopAgent(), 0);
    const std::string log = m_Agent->Output();
    EXPECT_EQ(log.find("Task '" + id + "': said by a job") != std::string::npos, logged) << log;
    EXPECT_NE(m_Directory.Read("state/var/output/" + id + ".log").find("said by a job"),
              std::string::npos);
  }
}
