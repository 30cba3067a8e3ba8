// What becomes of damaged task files, and of changes that cannot be written.
#include "agent/library/Json.h"
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>

using NoxAgent::Json;

namespace {

class Store : public AgentFixture {
 protected:
  // The largest file that the agent can write from now on.
  void LimitFiles(rlim_t bytes) const {
    const rlimit limit{bytes, RLIM_INFINITY};
    ASSERT_EQ(prlimit(m_Agent->Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
  }
};

}  // namespace

TEST_F(Store, ADamagedTaskFileIsKeptListedAndTakenBack) {
  std::filesystem::create_directories(m_Directory / "state/var/tasks");
  m_Directory.Write("state/var/tasks/backup.vsk", "<Task>\n<Sched");
  StartAgent();
  ASSERT_TRUE(WaitForFile("state/var/refused/backup.vsk"));
  EXPECT_TRUE(m_Agent->WaitForOutput("The task file backup.vsk:2:"));
  EXPECT_NE(Ctl({"status"}).m_Output.find("refused files  1"), std::string::npos);
  EXPECT_NE(Ctl({"files"}).m_Output.find("backup.vsk  refused"), std::string::npos);
  EXPECT_EQ(Ctl({"files", "--take-back", "backup.vsk"}).m_Status, 2) << "it is still damaged";

  m_Directory.Write("state/var/refused/backup.vsk", Document(Trigger(0, FromNow(3600))));
  const auto added = Ctl({"files", "--take-back", "backup.vsk"});
  EXPECT_EQ(added.m_Output, "added backup\n") << added.m_Error;
  EXPECT_NE(TaskFile("backup"), "");
  EXPECT_EQ(Ctl({"attributes", "backup"}).m_Status, 0) << "the scheduler holds it";
  EXPECT_EQ(Ctl({"status"}).m_Output.find("refused files"), std::string::npos);
}

TEST_F(Store, TheAgentMayOpenMoreFilesThanItsJobs) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit few = before;
  few.rlim_cur = 400;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  StartAgent();
  (void)setrlimit(RLIMIT_NOFILE, &before);
  rlimit ofAgent{};
  ASSERT_EQ(prlimit(m_Agent->Pid(), RLIMIT_NOFILE, nullptr, &ofAgent), 0);
  EXPECT_EQ(ofAgent.rlim_cur, std::min<rlim_t>(before.rlim_max, 65536));
  AddAsapTask("a", "ulimit -Sn > limit");
  ASSERT_TRUE(WaitForState("a", "Ok"));
  EXPECT_EQ(m_Directory.Read("limit"), "400\n");
}

TEST_F(Store, AChangeThatDoesNotFitOnTheDiskIsAnErrorAndTheAgentLives) {
  StartAgent();
  const std::string triggers = Trigger(0, FromNow(3600));
  AddTask("a", triggers);
  const std::string before = TaskFile("a");
  LimitFiles(64 * 1024);
  const std::string comment = "<!--" + std::string(128 * 1024, 'x') + "-->";
  const auto refused = Ctl({"add", "-", "--id", "a"}, Document(triggers + comment));
  EXPECT_EQ(refused.m_Status, 1);
  EXPECT_NE(refused.m_Error.find("in force in memory alone"), std::string::npos) << refused.m_Error;
  EXPECT_NE(refused.m_Error.find("a (File too large)"), std::string::npos) << refused.m_Error;
  EXPECT_EQ(TaskFile("a"), before);
  EXPECT_EQ(Ctl({"add", "-", "--id", "b"}, Document(triggers + comment)).m_Status, 1);
  EXPECT_EQ(TaskFile("b"), "");
  LimitFiles(RLIM_INFINITY);
  EXPECT_EQ(Ctl({"add", "-", "--id", "a"}, Document(triggers + comment)).m_Status, 0);
}
