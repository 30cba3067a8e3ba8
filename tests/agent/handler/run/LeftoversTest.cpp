#include "agent/handler/run/Leftovers.h"

#include "agent/handler/run/RunRecords.h"
#include "agent/handler/system/ProcessTable.h"
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

// Processes as an agent that was killed leaves them: nobody watches them any more.
class Leftovers : public SupervisorFixture {
 protected:
  ~Leftovers() override {
    if (m_Leader > 0) {
      (void)kill(-m_Leader, SIGKILL);
      Reap();
    }
  }

  void StartSession(const std::string& script) {
    const std::string environment = "STARTED=" + m_Started.Path();
    const char* const arguments[] = {"sh", "-c", script.c_str(), nullptr};
    const char* const variables[] = {environment.c_str(), "NOX_RUN_ID=token", "PATH=/usr/bin:/bin",
                                     nullptr};
    m_Leader = fork();
    if (m_Leader == 0) {
      (void)setsid();
      (void)execve("/bin/sh", const_cast<char* const*>(arguments),
                   const_cast<char* const*>(variables));
      _exit(127);
    }
  }

  RunRecord Record() const {
    const auto process = ProcessTable::Find(m_Leader);
    return {m_Leader, process ? process->m_StartTicks : 1, ProcessTable::BootId(), "token"};
  }

  void EndLeftovers(const RunRecord& record, std::chrono::milliseconds grace = LongGrace) {
    RunRecords records(AString((m_Directory / "records").c_str()), 1);
    ASSERT_EQ(records.Write({"a", record}), 0);
    NoxHandler::Leftovers::End(records, grace);
    EXPECT_TRUE(records.All().empty());
  }

  void Reap() { (void)waitpid(m_Leader, nullptr, 0); }

  pid_t m_Leader = -1;
};

}  // namespace

TEST_F(Leftovers, AreEnded) {
  StartSession("sh -c 'echo $$ > $STARTED; exec sleep 1000' & echo $$ > $STARTED; wait");
  const std::string one = Started();
  const std::string two = Started();
  EndLeftovers(Record());
  EXPECT_FALSE(IsAlive(one));
  EXPECT_FALSE(IsAlive(two));
  EXPECT_EQ(LogCount("Ending the run of task 'a' that an earlier agent left behind"), 1u);
}

TEST_F(Leftovers, AreKilledWhenTheyDoNotEnd) {
  StartSession("trap '' TERM; echo $$ > $STARTED; while :; do sleep 1; done");
  const std::string pid = Started();
  EndLeftovers(Record(), std::chrono::milliseconds(50));
  EXPECT_FALSE(IsAlive(pid));
}

TEST_F(Leftovers, AreFoundWhenTheirCommandIsGone) {
  StartSession("sh -c 'echo $$ > $STARTED; exec sleep 1000' &");
  const std::string left = Started();
  const RunRecord record = Record();
  Reap();
  EndLeftovers(record);
  EXPECT_FALSE(IsAlive(left));
}

TEST_F(Leftovers, AreNotProcessesThatOnlyBearTheNumber) {
  StartSession("echo $$ > $STARTED; exec sleep 1000");
  const std::string pid = Started();
  RunRecord record = Record();
  record.m_StartTicks += 1;
  EndLeftovers(record);
  EXPECT_TRUE(IsAlive(pid));
}

TEST_F(Leftovers, AreNotProcessesOfASessionWithoutTheRunsToken) {
  StartSession("sh -c 'echo $$ > $STARTED; exec sleep 1000' &");
  const std::string left = Started();
  RunRecord record = Record();
  Reap();
  record.m_Token = "toke";
  EndLeftovers(record);
  EXPECT_TRUE(IsAlive(left));
}

TEST_F(Leftovers, DoNotOutliveTheMachine) {
  StartSession("echo $$ > $STARTED; exec sleep 1000");
  const std::string pid = Started();
  RunRecord record = Record();
  record.m_BootId = "another-boot";
  EndLeftovers(record);
  EXPECT_TRUE(IsAlive(pid));
}

TEST_F(Leftovers, AreEndedBeforeTheirTaskRunsAgain) {
  StartSession("echo $$ > $STARTED; exec sleep 1000");
  const std::string left = Started();
  RunRecords records(AString((m_Directory / "records").c_str()), 1);
  ASSERT_EQ(records.Write({"a", Record()}), 0);
  AddJob("a", "kill -0 " + left + " 2>/dev/null && ps -o stat= -p " + left +
                  " | grep -qv Z && exit 1; exit 0");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
}

}  // namespace NoxHandlerTest
