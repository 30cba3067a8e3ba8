// How commands are started and what becomes of them.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <BaseSDK/ADateTime.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using BaseSDK::ALogger;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class Run : public SupervisorFixture {
 protected:
  using Clock = std::chrono::steady_clock;

  // How long the run took, as the one message says that begins with `head` and goes on with the
  // seconds; negative without such a message.
  std::chrono::duration<double> TimeTold(const std::string& head) const {
    std::chrono::duration<double> told(-1);
    for (const auto& line : m_Log.Lines()) {
      const std::string text = line.m_Message.ToUtf8();
      if (text.starts_with(head)) {
        const std::string seconds = text.substr(head.size());
        EXPECT_THAT(seconds, testing::MatchesRegex("[0-9]+\\.[0-9]{3} s"));
        EXPECT_LT(told.count(), 0) << "said twice: " << text;
        told = std::chrono::duration<double>(std::stod(seconds));
      }
    }
    return told;
  }
};

}  // namespace

TEST_F(Run, IsOkAfterExitStatusZero) {
  const auto begin = Clock::now();
  EXPECT_EQ(RunToEnd("exit 0"), "a Ok");
  const auto told = TimeTold("Task 'a' succeeded: exit status 0 after ");
  EXPECT_GE(told.count(), 0);
  EXPECT_LE(told, Clock::now() - begin);
}

// Counted while the supervisor tells of an end: it is opening nothing then.
TEST_F(Run, TakesTheDescriptorsThatAreReckonedForIt) {
  std::vector<long> open;
  m_Scheduler.OnState([&open] {
    open.push_back(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
  });
  AddGatedJob("a");
  AddJob("b", "exit 0");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  Dispatch("b");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"b Ok"});
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  ASSERT_EQ(open.size(), 2U);
  EXPECT_EQ(open[0] - open[1], static_cast<long>(HandlerSettings::DescriptorsPerRun));
}

TEST_F(Run, IsOkWhenItHasEndedBeforeItIsAskedTo) {
  AddGatedJob("a");
  AddJob("b", "exit 0");
  StartSupervisor();
  Dispatch("a");
  const std::string process = Started();
  std::thread stop;
  bool isFirst = true;
  m_Scheduler.OnState([&] {
    if (std::exchange(isFirst, false)) {  // the supervisor is telling of the other run
      OpenGate();
      EXPECT_TRUE(WaitForEnd(process));
      std::latch begins(1);
      stop = std::thread([&] {
        begins.count_down();
        EXPECT_TRUE(m_Supervisor->Stop());
      });
      begins.wait();
    }
  });
  Dispatch("b");
  EXPECT_EQ(m_Scheduler.WaitForStates(2), (std::vector<std::string>{"b Ok", "a Ok"}));
  stop.join();
}

TEST_F(Run, IsFailedAfterAnyOtherExitStatus) {
  EXPECT_EQ(RunToEnd("exit 3"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: exit status 3 after "), 1u);
}

TEST_F(Run, IsOkAfterAnExitStatusThatTheJobTakesForSuccess) {
  EXPECT_EQ(RunToEnd("exit 1", "success = 0,1"), "a Ok");
  EXPECT_EQ(LogCount("Task 'a' succeeded: exit status 1 after "), 1u);
}

TEST_F(Run, IsFailedAfterOneThatItDoesNot) {
  EXPECT_EQ(RunToEnd("exit 0", "success = 1"), "a Failed");
}

// The new process says so with a status that a job can name.
TEST_F(Run, IsFailedWhenItCannotStartWhateverCountsAsSuccess) {
  EXPECT_EQ(RunToEnd("exit 0", "success = 127\ndirectory = /nonexistent"), "a Failed");
}

TEST_F(Run, IsFailedAfterASignal) {
  EXPECT_EQ(RunToEnd("kill -9 $$"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: signal 9 (Killed) after "), 1u);
}

TEST_F(Run, IsFailedWithoutAJobFile) {
  m_Scheduler.AddStoredTask("a");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(m_Log.Messages(ALogger::Error).size(), 1u);
  EXPECT_EQ(
      LogCount("Task 'a' failed: there is no job file " + (m_Directory / "jobs/a.job").string()),
      1u);
}

TEST_F(Run, IsFailedWithABadJobFile) {
  EXPECT_EQ(RunToEnd("exit 0", "timeot = 5"), "a Failed");
  EXPECT_EQ(LogCount("a.job:4: unknown key \"timeot\""), 1u);
}

TEST_F(Run, IsFailedWhenThereIsNoSuchCommand) {
  for (const char* command : {"/nonexistent/command", "nonexistent-command"}) {
    SCOPED_TRACE(command);
    m_Directory.Write("jobs/a.job", std::string("[Job]\ncommand = ") + command + "\n");
    m_Scheduler.AddStoredTask("a");
    const std::size_t before = m_Scheduler.States().size();
    if (!m_Supervisor) {
      StartSupervisor();
    }
    Dispatch("a");
    ASSERT_EQ(m_Scheduler.WaitForStates(before + 1).size(), before + 1);
    EXPECT_EQ(m_Scheduler.States().back(), "a Failed");
    EXPECT_EQ(LogCount(std::string("Task 'a' failed: cannot run the job's command ") + command +
                       ": No such file or directory"),
              1u);
  }
}

TEST_F(Run, IsFailedWhenTheCommandMayNotBeExecuted) {
  m_Directory.Write("file", "");
  m_Directory.Write("jobs/a.job", "[Job]\ncommand = " + (m_Directory / "file").string() + "\n");
  m_Scheduler.AddStoredTask("a");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(LogCount("cannot run the job's command " + (m_Directory / "file").string() +
                     ": Permission denied"),
            1u);
}

TEST_F(Run, IsFailedWhenTheDirectoryIsMissing) {
  EXPECT_EQ(RunToEnd("exit 0", "directory = /nonexistent"), "a Failed");
  EXPECT_EQ(LogCount("cannot enter the job's directory /nonexistent: No such file or directory"),
            1u);
}

TEST_F(Run, IsFailedWhenThereIsNoSuchUser) {
  EXPECT_EQ(RunToEnd("exit 0", "user = nosuchuser"), "a Failed");
  EXPECT_EQ(LogCount("a.job:4: user: there is no user \"nosuchuser\""), 1u);
}

// Root runs it as that user, everybody else is told that it cannot.
TEST_F(Run, BecomesAnotherUserForRootAlone) {
  const std::string state = RunToEnd(
      "id -u; id -G; echo $HOME $USER; touch /root/nox && exit 1; exit 0", "user = nobody");
  if (geteuid() == 0) {
    EXPECT_EQ(state, "a Ok") << Output("a");
    EXPECT_EQ(Output("a").find("65534\n65534\n/nonexistent nobody\n"), 0u) << Output("a");
  } else {
    EXPECT_EQ(state, "a Failed");
    EXPECT_EQ(LogCount("a.job:4: user: only an agent that runs as root"), 1u);
  }
}

TEST_F(Run, WorksInTheJobsDirectory) {
  EXPECT_EQ(RunToEnd("pwd", "directory = /usr"), "a Ok");
  EXPECT_EQ(Output("a").find("/usr\n"), 0u) << Output("a");
}

TEST_F(Run, ReadsItsInputAndThenTheEnd) {
  EXPECT_EQ(RunToEnd("cat; cat", "input = one\\ntwo\\n"), "a Ok");
  EXPECT_EQ(Output("a").find("one\ntwo\n"), 0u) << Output("a");
}

TEST_F(Run, ReadsALargeInputAtItsOwnPace) {
  EXPECT_EQ(RunToEnd("wc -c; cat | wc -c", "input = " + std::string(32 * 1024, 'x')), "a Ok");
  EXPECT_EQ(Output("a").find("32768\n0\n"), 0u) << Output("a");
}

TEST_F(Run, HasItsUmask) {
  EXPECT_EQ(RunToEnd("umask", "umask = 077"), "a Ok");
  EXPECT_EQ(Output("a").find("0077\n"), 0u) << Output("a");
}

TEST_F(Run, HasTheVariablesOfItsFileAsTheyAreWhenItStarts) {
  const std::string file = (m_Directory / "env").string();
  AddJob("a", "echo $FIRST $SECOND $NOX_TASK_ID", "environment_file = " + file);
  m_Directory.Write("jobs/a.job", m_Directory.Read("jobs/a.job") + "SECOND = job\n");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1).back(), "a Failed");
  EXPECT_EQ(LogCount("a.job:4: environment_file: there is no environment file " + file), 1u);
  m_Directory.Write("env", "FIRST=file\nSECOND=file\nNOX_TASK_ID=file\n");
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  EXPECT_NE(Output("a").find("\nfile job a\n"), std::string::npos) << Output("a");
}

TEST_F(Run, HasAnEnvironmentOfItsOwn) {
  ASSERT_EQ(setenv("NOX_TEST_LEAK", "leaked", 1), 0);
  EXPECT_EQ(RunToEnd("env"), "a Ok");
  (void)unsetenv("NOX_TEST_LEAK");
  const std::string output = "\n" + Output("a");
  EXPECT_EQ(output.find("NOX_TEST_LEAK"), std::string::npos);
  for (const char* part : {"\nPATH=", "\nHOME=/", "\nSHELL=/", "\nNOX_TASK_ID=a\n",
                           "\nNOX_LATE=0\n", "\nNOX_RUN_ID=", "\nGATE=/"}) {
    EXPECT_NE(output.find(part), std::string::npos) << part << " is missing in " << output;
  }
}

TEST_F(Run, StartsLikeAFreshProgram) {
  const FileDescriptor leak(dup(STDERR_FILENO));  // without close-on-exec
  EXPECT_EQ(RunToEnd("ls -1 /proc/self/fd | wc -l; read line || echo at end\n"
                     "grep -E 'Sig(Blk|Ign)' /proc/self/status\n"
                     "ps -o sid=,pgid= -p $$ | awk -v me=$$ '{print ($1 == me && $2 == me)}'\n"
                     "umask; ls -l /proc/$$/fd/0 | sed 's/.*-> //'"),
            "a Ok");
  // ls has the three streams and the directory it lists.
  EXPECT_EQ(Output("a").find("4\nat end\nSigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"
                             "1\n0022\n/dev/null\n"),
            0u)
      << Output("a");
}

TEST_F(Run, PutsOutputAndErrorsIntoTheLogAndTheFile) {
  EXPECT_EQ(RunToEnd("echo one; echo two >&2; printf three"), "a Ok");
  EXPECT_EQ(Output("a").find("one\ntwo\nthree\n-- "), 0u) << Output("a");
  for (const char* line : {"Task 'a': one", "Task 'a': two", "Task 'a': three"}) {
    EXPECT_TRUE(m_Log.Has(ALogger::Information, line)) << line;
  }
}

TEST_F(Run, PutsOutputIntoTheFileAloneWhenTheConfigurationSaysSo) {
  m_LogOutput = false;
  EXPECT_EQ(RunToEnd("echo one; printf three"), "a Ok");
  EXPECT_EQ(Output("a").find("one\nthree\n-- "), 0u) << Output("a");
  EXPECT_EQ(LogCount("one"), 0u);
  EXPECT_EQ(LogCount("three"), 0u);
  EXPECT_EQ(LogCount("Task 'a' succeeded: "), 1u);
}

TEST_F(Run, LosesNoneOfItsOutput) {
  EXPECT_EQ(RunToEnd("seq 1 20000"), "a Ok");
  EXPECT_EQ(LogCount("Task 'a': 20000"), 1u);
  EXPECT_EQ(m_Log.CountContaining("Task 'a': "), 20000u);
  EXPECT_NE(Output("a").find("\n20000\n-- "), std::string::npos);
  EXPECT_LE(Output("a").size(), OutputFile::KeepBytes);
}

TEST_F(Run, IsNotOverBeforeItsCommand) {
  AddJob("a", "exec >&- 2>&-; echo $$ > $STARTED; read line < $GATE");
  StartSupervisor();
  Dispatch("a");
  const std::string pid = Started();
  EXPECT_TRUE(IsAlive(pid));
  EXPECT_TRUE(m_Scheduler.States().empty());
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_FALSE(IsAlive(pid));
}

TEST_F(Run, EndsWhatItsCommandLeavesBehind) {
  // What it starts, it starts before it says so: a process that is born when the others are told to
  // end lives on until it is killed.
  AddJob("a",
         "sh -c 'sleep 1000 & echo $$ > $STARTED; wait; while :; do sleep 1000; done' &\n"
         "read line < $GATE; exit 0");
  StartSupervisor();
  Dispatch("a");
  const std::string left = Started();
  OpenGate();
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_FALSE(IsAlive(left));
}

TEST_F(Run, IsEndedByItsTimeout) {
  const auto begin = Clock::now();
  EXPECT_EQ(RunToEnd("sleep 1000", "timeout = 1"), "a Failed");
  const auto told = TimeTold("Task 'a' failed: ended by its timeout of 1 s after ");
  EXPECT_GE(told.count(), 1);
  EXPECT_LE(told, Clock::now() - begin);
}

TEST_F(Run, IsFailedByItsTimeoutEvenIfItThenExitsWithZero) {
  EXPECT_EQ(RunToEnd("trap 'exit 0' TERM; sleep 1000 & wait", "timeout = 1"), "a Failed");
}

TEST_F(Run, IsKilledWithAllItsProcessesWhenItDoesNotEnd) {
  // The next run comes due once this one has got so far, however long that takes: it is told to end
  // no earlier.
  AddJob("a",
         "[ $NOX_LATE = 1 ] && exit 0\n"
         "trap '' TERM\n"
         "sh -c 'trap \"\" TERM; echo $$ > $STARTED; while :; do sleep 1; done' &\n"
         "timeout 1000 sh -c 'trap \"\" TERM; echo $$ > $STARTED; while :; do sleep 1; done' &\n"
         "wait; while :; do sleep 1; done",
         "overlap = kill");
  StartSupervisor(std::chrono::milliseconds(100));
  Dispatch("a");
  const std::string first = Started();
  const std::string second = Started();  // in a process group of its own
  m_Supervisor->Post({{"a", true, false, false}});
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_FALSE(IsAlive(first));
  EXPECT_FALSE(IsAlive(second));
  EXPECT_EQ(LogCount("Task 'a' does not end when asked to: killing it"), 1u);
  EXPECT_EQ(LogCount("Task 'a' failed: ended for the task's next run after "), 1u);
}

TEST_F(Run, EndsAlsoWhenItWasStopped) {
  EXPECT_EQ(RunToEnd("kill -STOP $$", "timeout = 1"), "a Failed");
  EXPECT_EQ(LogCount("killing it"), 0u);
}

TEST_F(Run, IsEndedAtTheEndOfItsActivePeriod) {
  AddJob("a", "sleep 1000");
  const long begin = BaseSDK::ADateTime::Now().GetTime() - 57;
  m_Scheduler.AddStoredTask(
      "a", "<Task><Schedule><Trigger Type='0' Duration='1' KillAtEnd='1'><BeginDate>" +
               BaseSDK::ADateTime(begin).ToString("%Y/%m/%d %H:%M:%S").ToUtf8() +
               "</BeginDate></Trigger></Schedule></Task>");
  StartSupervisor();
  Dispatch("a", true, true);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(LogCount("ended by the end of its active period after "), 1u);
  // Not time(): that may lag by a tick.
  EXPECT_GE(std::chrono::system_clock::now().time_since_epoch(), std::chrono::seconds(begin + 60));
}

}  // namespace NoxHandlerTest
