#include "agent/handler/job/Job.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using BaseSDK::AString;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

std::string ErrorOf(const std::string& text) {
  try {
    (void)Job::Parse("/jobs/a.job", AString(text.c_str()));
  } catch (const JobError& error) {
    return error.what();
  }
  return "no error";
}

std::string LoadErrorOf(const std::filesystem::path& path) {
  try {
    (void)Job::Load(AString(path.c_str()));
  } catch (const JobError& error) {
    return error.what();
  }
  return "no error";
}

Job Parsed(const std::string& text) {
  return Job::Parse("/jobs/a.job", AString(text.c_str()));
}

}  // namespace

TEST(Job, ReadsEveryKey) {
  const Job job = Parsed(
      "; what it is for\n"
      "[Job]\r\n"
      "command = /usr/bin/env\n"
      "  arguments=-i \"a b\" 'c d' e\\ f \"\"\n"
      "user = nobody\n"
      "directory = /tmp\n"
      "timeout = 5m\n"
      "overlap = queue\n"
      "retry = 3 every 5m\n"
      "success = 0, 1\n"
      "input = a\\n\n"
      "environment_file = -/etc/a.env\n"
      "umask = 027\n"
      "max_late = 2h\n"
      "splay = 10m\n"
      "nice = 10\n"
      "ionice = idle\n"
      "memory = 512M\n"
      "cpu_time = 1h\n"
      "files = 64\n"
      "oom_score = 500\n"
      "on_failure = /bin/mail -s \"it failed\" ada\n"
      "on_recovery = true\n"
      "after = 3\n"
      "condition = on-power -q\n"
      "# variables\n"
      "[Environment]\n"
      "A_1 = one = two\n"
      "B =\n");
  EXPECT_EQ(job.m_Command, "/usr/bin/env");
  EXPECT_EQ(job.m_Arguments, (std::vector<std::string>{"-i", "a b", "c d", "e f", ""}));
  EXPECT_EQ(job.m_User, "nobody");
  EXPECT_EQ(job.m_Directory, "/tmp");
  EXPECT_EQ(job.m_TimeoutSeconds, 300);
  EXPECT_EQ(job.m_Overlap, OverlapRule::Queue);
  EXPECT_EQ(job.m_Retry, (RetryRule{false, 3, 300}));
  EXPECT_EQ(job.m_Success, (ExitStatuses{0, 1}));
  EXPECT_EQ(job.m_Input, "a\n");
  EXPECT_EQ(job.m_EnvironmentFile.m_Name, AString("/etc/a.env"));
  EXPECT_TRUE(job.m_EnvironmentFile.m_MayBeMissing);
  EXPECT_EQ(job.m_Umask, mode_t{027});
  EXPECT_EQ(job.m_MaxLateSeconds, 7200);
  EXPECT_EQ(job.m_SplaySeconds, 600);
  EXPECT_EQ(job.m_Limits.m_Nice, 10);
  EXPECT_TRUE(job.m_Limits.m_IoPriority);
  EXPECT_EQ(job.m_Limits.m_MemoryBytes, 536870912U);
  EXPECT_EQ(job.m_Limits.m_CpuSeconds, 3600);
  EXPECT_EQ(job.m_Limits.m_Files, 64);
  EXPECT_EQ(job.m_Limits.m_OomScore, "500");
  EXPECT_EQ(job.m_OnFailure, (std::vector<std::string>{"/bin/mail", "-s", "it failed", "ada"}));
  EXPECT_EQ(job.m_OnRecovery, std::vector<std::string>{"true"});
  EXPECT_EQ(job.m_After, 3);
  EXPECT_EQ(job.m_Condition, (std::vector<std::string>{"on-power", "-q"}));
  EXPECT_EQ(job.m_Environment,
            (std::map<std::string, std::string>{{"A_1", "one = two"}, {"B", ""}}));
}

TEST(Job, NeedsNothingButACommand) {
  const Job job = Parsed("[Job]\ncommand=true");
  EXPECT_EQ(job.m_Command, "true");
  EXPECT_TRUE(job.m_Arguments.empty());
  EXPECT_EQ(job.m_TimeoutSeconds, 0);
  EXPECT_EQ(job.m_Overlap, OverlapRule::Skip);
  EXPECT_TRUE(job.m_Retry.m_IsHourly);
  EXPECT_EQ(job.m_Success, ExitStatuses{0});
  EXPECT_EQ(job.m_Umask, mode_t{022});
  EXPECT_TRUE(job.m_OnFailure.empty() && job.m_OnRecovery.empty());
  EXPECT_TRUE(job.m_Condition.empty());
  EXPECT_EQ(job.m_After, 1);
}

TEST(Job, HasCommandsBesideItRunAsItselfWithATimeoutOfTheirOwn) {
  const Job job = Parsed(
      "[Job]\ncommand=true\nuser=nobody\ndirectory=/tmp\nnice=5\numask=077\ninput=x\nsuccess=7\n"
      "timeout=1s\non_failure=a 'b c'\n[Environment]\nA=1\n");
  const Job beside = job.Beside(job.m_OnFailure);
  EXPECT_EQ(beside.m_Command, "a");
  EXPECT_EQ(beside.m_Arguments, std::vector<std::string>{"b c"});
  EXPECT_EQ(beside.m_User, "nobody");
  EXPECT_EQ(beside.m_Directory, "/tmp");
  EXPECT_EQ(beside.m_Umask, mode_t{077});
  EXPECT_EQ(beside.m_Limits.m_Nice, 5);
  EXPECT_EQ(beside.m_Environment, job.m_Environment);
  EXPECT_EQ(beside.m_Input, "");
  EXPECT_EQ(beside.m_Success, ExitStatuses{0});
  EXPECT_EQ(beside.m_TimeoutSeconds, 60);
}

TEST(Job, MayBeginWithAByteOrderMark) {
  EXPECT_EQ(Parsed("\xEF\xBB\xBF[Job]\ncommand=true").m_Command, "true");
}

TEST(Job, ReadsTimeoutsInSecondsMinutesAndHours) {
  const struct {
    const char* m_Text;
    long m_Seconds;
  } rows[] = {{"0", 0},
              {"90", 90},
              {"90s", 90},
              {"5m", 300},
              {"2h", 7200},
              {"315360000", 315360000},
              {"87600h", 315360000}};
  for (const auto& row : rows) {
    EXPECT_EQ(Parsed(std::string("[Job]\ncommand=true\ntimeout=") + row.m_Text).m_TimeoutSeconds,
              row.m_Seconds)
        << row.m_Text;
  }
}

TEST(Job, ReadsItsUmaskInOctal) {
  const auto umaskOf = [](const std::string& text) {
    std::vector<AString> problems;
    const Job job = Job::Parse("a.job", ("[Job]\ncommand=true\numask=" + text).c_str(), problems);
    return problems.empty() ? static_cast<int>(job.m_Umask) : -1;
  };
  EXPECT_EQ(umaskOf("0"), 0);
  EXPECT_EQ(umaskOf("77"), 077);
  EXPECT_EQ(umaskOf("027"), 027);
  EXPECT_EQ(umaskOf("0777"), 0777);
  for (const char* text : {"", "8", "1000", "00027", "-1", "0x7", "u=rwx"}) {
    EXPECT_EQ(umaskOf(text), -1) << text;
  }
  EXPECT_EQ(ErrorOf("[Job]\ncommand=x\numask=8"),
            "/jobs/a.job:3: umask: is to be permission bits in octal from 0 to 777, such as 027");
}

TEST(Job, NamesFileLineAndKeyOfWhatIsWrong) {
  const struct {
    const char* m_Text;
    const char* m_Error;
  } rows[] = {
      {"", "/jobs/a.job: the section \"Job\" has no \"command\""},
      {"command = x", "/jobs/a.job:1: the key \"command\" stands before the first [Section]"},
      {"[Job]\ncommand\n", "/jobs/a.job:2: neither [Section] nor key = value"},
      {"[Job\n", "/jobs/a.job:1: a section is written [Name]; the closing bracket is missing"},
      {"[Job]\ncommand=x\ncommand=y", "/jobs/a.job:3: the key \"command\" is there twice"},
      {"[Job]\n\nComand=x",
       "/jobs/a.job:3: unknown key \"Comand\" (known: command, arguments, user, directory, "
       "timeout, "
       "overlap, retry, success, input, environment_file, umask, max_late, splay, nice, ionice, "
       "memory, cpu_time, files, oom_score, on_failure, on_recovery, after, condition)"},
      {"[Job]\ncommand=x\nnice=20", "/jobs/a.job:3: nice: is to be a number from -20 to 19"},
      {"[Job]\ncommand=x\nionice=9",
       "/jobs/a.job:3: ionice: is to be idle, best-effort N or realtime N, with N from 0 to 7"},
      {"[Job]\ncommand=x\nmemory=1",
       "/jobs/a.job:3: memory: is to be a number of bytes from 1M to 1024G, such as 512M"},
      {"[Job]\ncommand=x\ncpu_time=0", "/jobs/a.job:3: cpu_time: is to be at least 1s"},
      {"[Job]\ncommand=x\nfiles=1", "/jobs/a.job:3: files: is to be a number from 8 to 1048576"},
      {"[Job]\ncommand=x\noom_score=x",
       "/jobs/a.job:3: oom_score: is to be a number from -1000 to 1000"},
      {"[Job]\ncommand=x\non_failure='a",
       "/jobs/a.job:3: on_failure: a quote is not closed, or the text ends with a backslash"},
      {"[Job]\ncommand=x\non_failure=",
       "/jobs/a.job:3: on_failure: is to begin with an absolute path or the bare name of a "
       "program"},
      {"[Job]\ncommand=x\non_failure=a\non_recovery=b/c",
       "/jobs/a.job:4: on_recovery: is to begin with an absolute path or the bare name of a "
       "program"},
      {"[Job]\ncommand=x\ncondition=\"",
       "/jobs/a.job:3: condition: a quote is not closed, or the text ends with a backslash"},
      {"[Job]\ncommand=x\ncondition=./a",
       "/jobs/a.job:3: condition: is to begin with an absolute path or the bare name of a program"},
      {"[Job]\ncommand=x\non_failure=a\nafter=0",
       "/jobs/a.job:4: after: is to be a number of runs from 1 to 1000"},
      {"[Job]\ncommand=x\nafter=1001\non_failure=a",
       "/jobs/a.job:3: after: is to be a number of runs from 1 to 1000"},
      {"[Job]\ncommand=x\nafter=2", "/jobs/a.job:3: after: is of use only with on_failure"},
      {"[Job]\ncommand=x\non_recovery=a",
       "/jobs/a.job:3: on_recovery: is of use only with on_failure"},
      {"[Job]\ncommand=x\nmax_late=59", "/jobs/a.job:3: max_late: is to be at least 1m"},
      {"[Job]\ncommand=x\nmax_late=721h", "/jobs/a.job:3: max_late: is to be at most 720h"},
      {"[Job]\ncommand=x\nsplay=3601", "/jobs/a.job:3: splay: is to be at most 1h"},
      {"[Job]\ncommand=x\nsuccess=256",
       "/jobs/a.job:3: success: is to be exit statuses from 0 to 255 with commas between them, "
       "such "
       "as \"0, 1\""},
      {"[Job]\ncommand=x\ninput=\\x",
       "/jobs/a.job:3: input: a backslash is to be followed by n, t or another backslash"},
      {"[Job]\ncommand=x\nenvironment_file=x",
       "/jobs/a.job:3: environment_file: is to be an absolute path, with a dash in front if the "
       "file may be missing"},
      {"[Job]\ncommand=x\nretry=often",
       "/jobs/a.job:3: retry: is to be never, hourly, or how often and when again, such as "
       "\"3 every 5m\""},
      {"[Jobs]\ncommand=x", "/jobs/a.job:2: unknown section \"Jobs\" (known: Job, Environment)"},
      {"[Job]\ncommand=",
       "/jobs/a.job:2: command: is to be an absolute path or the bare name of a "
       "program"},
      {"[Job]\ncommand=bin/x",
       "/jobs/a.job:2: command: is to be an absolute path or the bare name "
       "of a program"},
      {"[Job]\ncommand=x\narguments='a",
       "/jobs/a.job:3: arguments: a quote is not closed, or the "
       "text ends with a backslash"},
      {"[Job]\ncommand=x\nuser=", "/jobs/a.job:3: user: a user's name is missing"},
      {"[Job]\ncommand=x\ndirectory=tmp", "/jobs/a.job:3: directory: is to be an absolute path"},
      {"[Job]\ncommand=x\ntimeout=5 m",
       "/jobs/a.job:3: timeout: is to be a number of seconds, or a "
       "number with s, m or h after it"},
      {"[Job]\ncommand=x\ntimeout=-1",
       "/jobs/a.job:3: timeout: is to be a number of seconds, or a "
       "number with s, m or h after it"},
      {"[Job]\ncommand=x\ntimeout=87601h", "/jobs/a.job:3: timeout: is to be at most 87600h"},
      {"[Job]\ncommand=x\ntimeout=99999999999999999999",
       "/jobs/a.job:3: timeout: is to be at most 87600h"},
      {"[Job]\ncommand=x\noverlap=Skip",
       "/jobs/a.job:3: overlap: is to be skip, queue, kill or allow"},
      {"[Environment]\nA-B=1",
       "/jobs/a.job:2: what stands before the \"=\" is no name for a variable"},
      {"[Job]\ncommand=\xFF",
       "/jobs/a.job:2: a character that is not text (the file is to be "
       "UTF-8)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf(row.m_Text), row.m_Error) << row.m_Text;
  }
}

TEST(Job, SaysWhichFileCannotBeOpened) {
  const TempDir directory;
  EXPECT_EQ(LoadErrorOf(directory / "a.job"),
            "there is no job file " + (directory / "a.job").string());
}

TEST(Job, RefusesWhatIsNoRegularFile) {
  const TempDir directory;
  ASSERT_EQ(mkfifo((directory / "a.job").c_str(), 0600), 0);
  EXPECT_EQ(LoadErrorOf(directory / "a.job"),
            "the job file " + (directory / "a.job").string() + " is not a regular file");
}

TEST(Job, RefusesAFileLargerThan64KiB) {
  const TempDir directory;
  directory.Write("a.job", "[Job]\ncommand=true\n" + std::string(64 * 1024, '#'));
  EXPECT_EQ(LoadErrorOf(directory / "a.job"),
            "the job file " + (directory / "a.job").string() + " is larger than 64 KiB");
}

TEST(Job, TellsOfAllThatIsWrongAtOnce) {
  std::vector<AString> problems;
  const char* const text = "[Job]\ntimeout=x\nuser=\n[Environment]\nA-B=1\n[Jobs]\ncommand=x\n";
  (void)Job::Parse("a.job", text, problems);
  EXPECT_EQ(
      problems,
      (std::vector<AString>{
          "a.job:2: timeout: is to be a number of seconds, or a number with s, m or h after it",
          "a.job:3: user: a user's name is missing",
          "a.job:5: what stands before the \"=\" is no name for a variable",
          "a.job:7: unknown section \"Jobs\" (known: Job, Environment)",
          "a.job: the section \"Job\" has no \"command\""}));
}

// Whoever can write a job has the rights that it runs with.
TEST(Job, RefusesWhatStrangersMayHaveWritten) {
  const bool isRoot = geteuid() == 0;
  const std::string wanted =
      isRoot ? " is to belong to root and to be writable by root alone (chown root, chmod go-w), "
               "for jobs run with root's rights"
             : " is to belong to the agent's user or root and not to be writable by everybody "
               "(chmod o-w), for jobs run with the agent's rights";
  const TempDir directory;
  directory.Write("a.job", "[Job]\ncommand=true\n");
  const std::string file = (directory / "a.job").string();
  for (const std::string& path : {file, directory.Path().string()}) {
    SCOPED_TRACE(path);
    const std::string error =
        (path == file ? "the job file " + path : "the directory " + path + " of the job file") +
        wanted;
    ASSERT_EQ(chmod(path.c_str(), 0757), 0);
    EXPECT_EQ(LoadErrorOf(file), error);
    ASSERT_EQ(chmod(path.c_str(), 0775), 0);
    EXPECT_EQ(LoadErrorOf(file), isRoot ? error : "no error");
    ASSERT_EQ(chmod(path.c_str(), 0755), 0);
    EXPECT_EQ(LoadErrorOf(file), "no error");
    if (isRoot) {
      ASSERT_EQ(chown(path.c_str(), 65534, 0), 0);
      EXPECT_EQ(LoadErrorOf(file), error);
      ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    }
  }
}

}  // namespace NoxHandlerTest
