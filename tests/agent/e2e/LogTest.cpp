// What the agent's log tells its operator.
#include "tests/agent/e2e/AgentFixture.h"

namespace {

class Log : public AgentFixture {};

}  // namespace

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
