// The agent is killed at any moment: no task file is ever half written, nothing is lost, and no job
// ever runs twice at the same time.
#include "tests/agent/e2e/AgentFixture.h"

#include <BaseSDK/AXmlDoc.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <random>

using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace {

class Crash : public AgentFixture {
 protected:
  void ExpectWholeTaskFiles(std::size_t count) const {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_Directory / "state/var/tasks")) {
      if (entry.path().extension() != ".vsk") {
        continue;
      }
      ++files;
      const std::string text = TaskFile(entry.path().stem().string());
      const AXmlDoc document(AString(text.c_str()));
      EXPECT_TRUE(document.IsParsed()) << entry.path() << ": " << text;
      EXPECT_FALSE(document.SelectSingleNode("/Task/Schedule").IsEmpty()) << text;
    }
    EXPECT_EQ(files, count);
  }
};

}  // namespace

TEST_F(Crash, EndsTheOldRunBeforeTheTaskRunsAgain) {
  StartAgent();
  // Whoever finds the lock taken is the second copy.
  AddAsapTask("a",
              "exec >/dev/null 2>&1 9>lock; flock -n 9 || echo second >> copies\n"
              "echo $$ >> runs; [ -e go ] && exit 0; while :; do sleep 0.05; done");
  ASSERT_TRUE(WaitUntil([&] { return CountLines("runs") == 1; }));
  KillAgent();
  EXPECT_EQ(State("a"), "Started");
  const std::string left = m_Directory.Read("runs");
  EXPECT_TRUE(IsAlive(std::stoi(left))) << "a killed agent cannot end its jobs";
  m_Directory.Write("go", "");
  StartAgent();
  EXPECT_TRUE(WaitForState("a", "Ok"));
  EXPECT_FALSE(IsAlive(std::stoi(left)));
  EXPECT_EQ(CountLines("runs"), 2u);
  EXPECT_FALSE(m_Directory.Has("copies"));
}

TEST_F(Crash, LeavesEveryTaskFileOldOrNew) {
  constexpr int Tasks = 6;
  constexpr int Crashes = 8;
  StartAgent();
  for (int i = 0; i < Tasks; ++i) {
    const std::string id = "task" + std::to_string(i);
    AddJob(id, "exec 9>" + id + ".lock; flock -n 9 || echo second >> copies; sleep 0.05");
    AddTask(id, Trigger(1, FromNow(0), "Interval='1' IntervalUnit='SECOND' Duration='60'"));
  }
  std::mt19937 random(20050301);
  for (int crash = 0; crash < Crashes; ++crash) {
    SCOPED_TRACE(crash);
    // Among the writes that the next due second brings.
    const std::string before = LastRun("task0");
    ASSERT_TRUE(WaitUntil([&] { return LastRun("task0") != before; }));
    (void)usleep(static_cast<useconds_t>(random() % 20000));
    KillAgent();
    ExpectWholeTaskFiles(Tasks);
    StartAgent();
  }
  EXPECT_FALSE(m_Directory.Has("copies"));
  for (int i = 0; i < Tasks; ++i) {
    EXPECT_TRUE(WaitForState("task" + std::to_string(i), "Ok"));
  }
}

TEST_F(Crash, ClearsAwayWhatAWriteLeftBehind) {
  std::filesystem::create_directories(m_Directory / "state/var/tasks");
  m_Directory.Write("state/var/tasks/.a.x1y2z3", "<Task");
  m_Directory.Write("state/var/tasks/.hidden", "not ours");
  StartAgent();
  EXPECT_FALSE(m_Directory.Has("state/var/tasks/.a.x1y2z3"));
  EXPECT_TRUE(m_Directory.Has("state/var/tasks/.hidden"));
}

TEST_F(Crash, DoesNotKeepTheNextAgentFromTheSocket) {
  StartAgent();
  KillAgent();
  EXPECT_TRUE(std::filesystem::exists(Socket()));
  StartAgent();
  EXPECT_EQ(Ctl({"status"}).m_Status, 0);
}
