#include "agent/crontab/CrontabJob.h"

#include "agent/crontab/CrontabFile.h"
#include "agent/handler/job/Job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using namespace NoxAgent;
using NoxHandler::Job;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

namespace {

// The job of the last line; "" with a failure when it is no task.
std::variant<std::string, CronRefusal> MakeJob(const std::string& crontab) {
  const auto entries = ReadCrontab(crontab, {false, "", "UTC"});
  const auto* const task = std::get_if<CrontabTask>(&entries.back().m_Content);
  if (task == nullptr) {
    ADD_FAILURE() << crontab;
    return std::string();
  }
  return MakeCrontabJob(*task);
}

std::string WholeJobText(const std::string& crontab) {
  const auto job = MakeJob(crontab);
  const auto* const refusal = std::get_if<CronRefusal>(&job);
  return refusal == nullptr ? std::get<std::string>(job) : "refused: " + refusal->m_Reason;
}

// Without the line that all have.
std::string JobText(const std::string& crontab) {
  constexpr std::string_view Line = "retry = never\n";
  std::string text = WholeJobText(crontab);
  if (const std::size_t at = text.find(Line); at != std::string::npos) {
    text.erase(at, Line.size());
  }
  return text;
}

// As the handler reads it.
Job ReadJob(const std::string& crontab) {
  return Job::Parse("x.job", BaseSDK::AString::FromUtf8(JobText(crontab)));
}

}  // namespace

TEST(CrontabJob, IsNotTriedAgain) {
  EXPECT_EQ("[Job]\ncommand = updatedb\nretry = never\n", WholeJobText("@daily updatedb"));
}

TEST(CrontabJob, RunsPlainWordsByThemselves) {
  EXPECT_EQ("[Job]\ncommand = /usr/local/bin/backup\narguments = --full -o=a,b x@y:/z +%F\n",
            JobText("@daily /usr/local/bin/backup --full -o=a,b x@y:/z +\\%F"));
  EXPECT_EQ("[Job]\ncommand = updatedb\n", JobText("@daily updatedb"));
  EXPECT_EQ("[Job]\ncommand = updatedb\n\n[Environment]\nSHELL = /bin/bash\n",
            JobText("SHELL=/bin/bash\n@daily updatedb"));
}

TEST(CrontabJob, LeavesTheRestToTheShell) {
  const struct {
    const char* m_Command;
    const char* m_Arguments;
  } rows[] = {
      {"cd / && ls", "-c 'cd / && ls'"},
      {"ls *.c", "-c 'ls *.c'"},
      {"~/bin/x", "-c ~/bin/x"},
      {"bin/x", "-c bin/x"},
      {"A=1 x", "-c 'A=1 x'"},
      {"exit 1", "-c 'exit 1'"},
      {"echo $HOME \\ x", "-c 'echo $HOME \\ x'"},
      {"echo 'it is' \"\\$x\"", "-c \"echo 'it is' \\\"\\\\$x\\\"\""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ("[Job]\ncommand = /bin/sh\narguments = " + std::string(row.m_Arguments) + "\n",
              JobText("@daily " + std::string(row.m_Command)))
        << row.m_Command;
    EXPECT_THAT(ReadJob("@daily " + std::string(row.m_Command)).m_Arguments,
                ElementsAre("-c", row.m_Command));
  }
}

TEST(CrontabJob, TakesTheShellOfTheCrontab) {
  EXPECT_EQ("/usr/bin/python3", ReadJob("SHELL=/usr/bin/python3\n@daily updatedb").m_Command);
  EXPECT_EQ("/bin/bash", ReadJob("SHELL=/bin/bash\n@daily a | b").m_Command);
  EXPECT_EQ("/bin/sh", ReadJob("ENV=/etc/shrc\n@daily updatedb").m_Command);
}

TEST(CrontabJob, HasTheSettingsAsItsEnvironment) {
  const Job job = ReadJob("PATH=/opt/bin:/bin\nMAILTO=\nHOME=/srv/x\n@daily a");
  EXPECT_THAT(job.m_Environment, ElementsAre(Pair("HOME", "/srv/x"), Pair("MAILTO", ""),
                                             Pair("PATH", "/opt/bin:/bin")));
  EXPECT_EQ("/srv/x", job.m_Directory);
  EXPECT_THAT(ReadJob("@daily a").m_Environment, IsEmpty());
}

TEST(CrontabJob, HasTheUserOfItsLine) {
  const auto entries = ReadCrontab("@daily www-data a", {true, "", "UTC"});
  EXPECT_EQ("[Job]\ncommand = a\nuser = www-data\nretry = never\n",
            std::get<std::string>(MakeCrontabJob(std::get<CrontabTask>(entries.back().m_Content))));
}

TEST(CrontabJob, WritesInputOnOneLine) {
  EXPECT_EQ("[Job]\ncommand = mail\narguments = root\ninput = a\\tb \\\\n 5%\\n\\nc\\n\n",
            JobText("@daily mail root%a\tb \\n 5\\%%%c"));
  EXPECT_EQ("[Job]\ncommand = cat\n", JobText("@daily cat%"));
}

TEST(CrontabJob, IsRefusedWhenAJobCannotSayIt) {
  EXPECT_EQ("refused: the value of A begins or ends with blanks, which a job does not keep",
            JobText("A=' x'\n@daily a"));
  EXPECT_EQ("refused: HOME is \"x\", and a job's directory is an absolute path",
            JobText("HOME=x\n@daily a"));
  EXPECT_EQ("refused: SHELL is \"\", and no job can run that", JobText("SHELL=\n@daily a"));
  EXPECT_EQ("refused: SHELL is \"bin/sh\", and no job can run that",
            JobText("SHELL=bin/sh\n@daily a"));
  EXPECT_EQ("refused: the input behind \"%\" begins with a blank, which a job does not keep",
            JobText("@daily cat% x"));
  EXPECT_EQ("refused: its job would be larger than 64 KiB",
            JobText("@daily " + std::string(65536, 'x')));
}

}  // namespace NoxAgentTest
