#include "agent/handler/process/LaunchTrial.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using BaseSDK::AString;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

std::string ProblemOf(const std::string& text) {
  try {
    LaunchTrial::Check(Job::Parse("/jobs/a.job", AString(("[Job]\n" + text).c_str())));
  } catch (const JobError& error) {
    return error.what();
  }
  return "none";
}

}  // namespace

TEST(LaunchTrial, FindsNothingWrongWithWhatCouldBeStarted) {
  EXPECT_EQ(ProblemOf("command = sh"), "none");
  EXPECT_EQ(ProblemOf("command = /bin/sh\ndirectory = /usr"), "none");
}

TEST(LaunchTrial, LooksForABareNameInThePathOfTheJob) {
  const TempDir directory;
  EXPECT_EQ(ProblemOf("command = nox-test-program"),
            "/jobs/a.job:2: command: there is no program nox-test-program in the job's PATH");
  directory.Write("nox-test-program", "#!/bin/sh\n");
  const std::string path = "[Environment]\nPATH = /nonexistent:" + directory.Path().string() + "\n";
  EXPECT_EQ(ProblemOf("command = nox-test-program\n" + path),
            "/jobs/a.job:2: command: nox-test-program may not be executed");
  ASSERT_EQ(chmod((directory / "nox-test-program").c_str(), 0700), 0);
  EXPECT_EQ(ProblemOf("command = nox-test-program\n" + path), "none");
}

TEST(LaunchTrial, NamesWhatIsMissing) {
  EXPECT_EQ(ProblemOf("command = /nonexistent/x"),
            "/jobs/a.job:2: command: there is no program /nonexistent/x");
  EXPECT_EQ(ProblemOf("command = /usr"), "/jobs/a.job:2: command: /usr may not be executed");
  EXPECT_EQ(ProblemOf("command = sh\n\nuser = nosuchuser"),
            "/jobs/a.job:4: user: there is no user \"nosuchuser\"");
  EXPECT_EQ(ProblemOf("command = sh\ndirectory = /nonexistent"),
            "/jobs/a.job:3: directory: there is no directory /nonexistent");
  EXPECT_EQ(ProblemOf("command = sh\ndirectory = /etc/passwd"),
            "/jobs/a.job:3: directory: /etc/passwd is not a directory that may be entered");
}

TEST(LaunchTrial, LooksForTheProgramsOfCommandsBesideTheJob) {
  EXPECT_EQ(ProblemOf("command = sh\non_failure = true\non_recovery = sh -c x"), "none");
  EXPECT_EQ(ProblemOf("command = sh\ncondition = /nonexistent/x"),
            "/jobs/a.job:3: condition: there is no program /nonexistent/x");
  EXPECT_EQ(ProblemOf("command = sh\non_failure = /nonexistent/x y"),
            "/jobs/a.job:3: on_failure: there is no program /nonexistent/x");
  EXPECT_EQ(ProblemOf("command = sh\non_failure = true\non_recovery = nox-test-program"),
            "/jobs/a.job:4: on_recovery: there is no program nox-test-program in the job's PATH");
}

}  // namespace NoxHandlerTest
