#include "agent/handler/system/ProcessTable.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

// A process in a session of its own that waits to be killed.
class Waiter {
 public:
  explicit Waiter(const char* name = "waiter", bool ownSession = true) {
    int ready[2];
    if (pipe(ready) != 0) {
      std::abort();
    }
    m_Pid = fork();
    if (m_Pid == 0) {
      if (ownSession) {
        (void)setsid();
      }
      (void)prctl(PR_SET_NAME, name);
      (void)!write(ready[1], "r", 1);
      for (;;) {
        (void)pause();
      }
    }
    char byte = 0;
    (void)!read(ready[0], &byte, 1);
    (void)close(ready[0]);
    (void)close(ready[1]);
  }
  ~Waiter() {
    Kill();
    (void)waitpid(m_Pid, nullptr, 0);
  }
  // Dead, but not forgotten: what a process is until its parent asks.
  void Kill() const {
    (void)kill(m_Pid, SIGKILL);
    siginfo_t info{};
    (void)waitid(P_PID, static_cast<id_t>(m_Pid), &info, WEXITED | WNOWAIT);
  }
  pid_t Pid() const { return m_Pid; }

 private:
  pid_t m_Pid;
};

}  // namespace

TEST(ProcessTable, FindsTheTestItself) {
  const auto self = ProcessTable::Find(getpid());
  ASSERT_TRUE(self.has_value());
  EXPECT_EQ(self->m_Pid, getpid());
  EXPECT_EQ(self->m_Group, getpgrp());
  EXPECT_EQ(self->m_Session, getsid(0));
  EXPECT_EQ(self->m_State, 'R');
  EXPECT_GT(self->m_StartTicks, 0u);
  EXPECT_EQ(ProcessTable::Find(getpid())->m_StartTicks, self->m_StartTicks);
}

TEST(ProcessTable, ReadsPastAnyName) {
  const Waiter waiter(") Z 1 2 (");
  const auto process = ProcessTable::Find(waiter.Pid());
  ASSERT_TRUE(process.has_value());
  EXPECT_EQ(process->m_Session, waiter.Pid());
  EXPECT_TRUE(process->m_State == 'S' || process->m_State == 'R') << process->m_State;
}

TEST(ProcessTable, KnowsWhoIsGone) {
  pid_t pid = 0;
  {
    const Waiter waiter;
    pid = waiter.Pid();
  }
  EXPECT_FALSE(ProcessTable::Find(pid).has_value());
  EXPECT_FALSE(ProcessTable::HasVariable(pid, "PATH=/"));
}

TEST(ProcessTable, ListsASessionWithoutThoseThatHaveEnded) {
  const Waiter waiter;
  const auto session = ProcessTable::OfSession(waiter.Pid());
  ASSERT_EQ(session.size(), 1u);
  EXPECT_EQ(session[0].m_Pid, waiter.Pid());
  waiter.Kill();
  EXPECT_TRUE(ProcessTable::OfSession(waiter.Pid()).empty());
  EXPECT_EQ(ProcessTable::Find(waiter.Pid())->m_State, 'Z');
}

// A run may have to end before its command came as far as to make its session.
TEST(ProcessTable, ListsTheLeaderOfASessionThatIsYetToBeMade) {
  const Waiter waiter("waiter", false);
  const auto session = ProcessTable::OfSession(waiter.Pid());
  ASSERT_EQ(session.size(), 1u);
  EXPECT_EQ(session[0].m_Pid, waiter.Pid());
}

// Again and again it is between two programs, and has no environment then.
TEST(ProcessTable, KnowsTheVariablesOfAProcessThatBecomesAnotherProgram) {
  const pid_t pid = fork();
  if (pid == 0) {
    const char* const script = "exec /bin/sh -c \"$0\" \"$0\"";
    const char* const arguments[] = {"sh", "-c", script, script, nullptr};
    const char* const variables[] = {"NOX_RUN_ID=token", "OTHER=x", nullptr};
    (void)execve("/bin/sh", const_cast<char* const*>(arguments),
                 const_cast<char* const*>(variables));
    _exit(127);
  }
  while (!ProcessTable::HasVariable(pid, "NOX_RUN_ID=token")) {
    ASSERT_TRUE(ProcessTable::Find(pid).has_value());  // it is yet to begin
  }
  int missed = 0;
  for (int i = 0; i < 20000; ++i) {
    missed += ProcessTable::HasVariable(pid, "NOX_RUN_ID=token") ? 0 : 1;
  }
  EXPECT_EQ(missed, 0);
  EXPECT_FALSE(ProcessTable::HasVariable(pid, "NOX_RUN_ID=toke"));
  (void)kill(pid, SIGKILL);
  (void)waitpid(pid, nullptr, 0);
}

TEST(ProcessTable, NamesTheBootInOneWord) {
  const std::string id = ProcessTable::BootId();
  EXPECT_EQ(id.size(), 36u);
  EXPECT_EQ(id.find_first_of(" \n"), std::string::npos);
  EXPECT_EQ(ProcessTable::BootId(), id);
}

}  // namespace NoxHandlerTest
