// What becomes of damaged task files, and of changes that cannot be written.
#include "agent/library/Json.h"
#include "tests/agent/e2e/AgentFixture.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

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

TEST_F(Store, FilesAndDirectoriesAreForTheAgentAndItsGroupWhateverTheUmask) {
  for (const mode_t mask : {0U, 077U}) {
    std::filesystem::remove_all(m_Directory / "state");
    m_Directory.Write("agent.ini", "[Log]\nfile = %installdir%/log/agent.log\n");
    const mode_t before = umask(mask);
    StartAgent({"--config", Path("agent.ini")});
    (void)umask(before);
    AddAsapTask("a", "echo done; umask > mask");
    ASSERT_TRUE(WaitForState("a", "Ok"));
    m_Directory.Write("state/var/tasks/bad.vsk", "bad");
    EXPECT_EQ(Ctl({"show", "bad"}).m_Status, 1) << "it is read and put away";
    const struct {
      const char* m_Name;
      unsigned m_Mode;
    } rows[] = {{"state", 0750},
                {"state/log", 0750},
                {"state/log/agent.log", 0640},
                {"state/noxagentd.lock", 0640},
                {"state/run", 0755},
                {"state/run/noxagentd.lock", 0640},
                {"state/run/control.sock", 0660},
                {"state/var", 0750},
                {"state/var/tasks", 0750},
                {"state/var/tasks/a.vsk", 0640},
                {"state/var/jobs", 0750},
                {"state/var/output", 0750},
                {"state/var/output/a.log", 0640},
                {"state/var/output/.running", 0750},
                {"state/var/refused", 0750}};
    for (const auto& row : rows) {
      struct stat info {};
      EXPECT_EQ(stat(Path(row.m_Name).c_str(), &info), 0) << row.m_Name;
      EXPECT_EQ(info.st_mode & 07777, row.m_Mode) << row.m_Name << " with the umask " << mask;
    }
    EXPECT_EQ(m_Directory.Read("mask"), "0022\n") << "of jobs";
    EXPECT_EQ(StopAgent(), 0);
  }
}

TEST_F(Store, AnExistingDirectoryKeepsItsMode) {
  std::filesystem::permissions(m_Directory / "state", std::filesystem::perms(0711));
  StartAgent();
  EXPECT_EQ(std::filesystem::status(m_Directory / "state").permissions(),
            std::filesystem::perms(0711));
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
