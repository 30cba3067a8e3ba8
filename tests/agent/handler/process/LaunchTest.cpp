#include "agent/handler/process/Launch.h"

#include <BaseSDK/ASystemZone.h>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

using Variables = std::map<std::string, std::string>;

Variables EnvironmentOf(const std::string& text) {
  const Job job = Job::Parse("/jobs/a.job", AString(("[Job]\ncommand = x\n" + text).c_str()));
  Variables variables;
  for (const std::string& variable :
       Launch(job, {"a", true, false, false}, "token", 3).m_Environment) {
    const std::size_t equals = variable.find('=');
    EXPECT_TRUE(variables.emplace(variable.substr(0, equals), variable.substr(equals + 1)).second)
        << variable << " is there twice";
  }
  return variables;
}

// What a test does to the environment ends with the child process that it is done in.
void InChild(const std::function<void()>& body) {
  EXPECT_EXIT(
      {
        body();
        (void)std::fflush(stdout);
        _exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace

// docs/command-handler.md has the table.
TEST(Launch, GivesAJobTheSameEnvironmentWhoeverStartedTheAgent) {
  InChild([] {
    ASSERT_EQ(clearenv(), 0);
    Variables expected = EnvironmentOf("");
    EXPECT_EQ(expected["PATH"], "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin");
    EXPECT_EQ(expected["LANG"], "C.UTF-8");
    for (const char* name : {"PATH", "LANG", "LC_ALL", "HOME", "SHELL", "USER", "LOGNAME", "TERM",
                             "LD_PRELOAD", "INVOCATION_ID", "NOX_TASK_ID", "NOX_LATE"}) {
      ASSERT_EQ(setenv(name, "/of/whoever/started/it", 1), 0);
    }
    EXPECT_EQ(EnvironmentOf(""), expected);
    const passwd* const user = getpwuid(geteuid());
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(expected, (Variables{{"PATH", expected["PATH"]},
                                   {"LANG", expected["LANG"]},
                                   {"HOME", user->pw_dir},
                                   {"SHELL", user->pw_shell},
                                   {"USER", user->pw_name},
                                   {"LOGNAME", user->pw_name},
                                   {"NOX_TASK_ID", "a"},
                                   {"NOX_LATE", "1"},
                                   {"NOX_RUN_ID", "token"},
                                   {"NOX_ATTEMPT", "3"}}));
  });
}

TEST(Launch, LetsAJobSetAllButWhatTellsOfTheRun) {
  const Variables variables = EnvironmentOf(
      "[Environment]\nPATH = /x\nHOME = /y\nNEW = z\nNOX_TASK_ID = b\nNOX_LATE = 7\n"
      "NOX_RUN_ID = c\nNOX_ATTEMPT = d\n");
  EXPECT_EQ(variables.at("PATH"), "/x");
  EXPECT_EQ(variables.at("HOME"), "/y");
  EXPECT_EQ(variables.at("NEW"), "z");
  EXPECT_EQ(variables.at("NOX_TASK_ID"), "a");
  EXPECT_EQ(variables.at("NOX_LATE"), "1");
  EXPECT_EQ(variables.at("NOX_RUN_ID"), "token");
  EXPECT_EQ(variables.at("NOX_ATTEMPT"), "3");
}

TEST(Launch, HandsOnTheZoneThatTheAdministratorSet) {
  InChild([] {
    ASSERT_EQ(setenv("TZ", "Europe/Berlin", 1), 0);
    BaseSDK::ASystemZone::Hold();
    EXPECT_EQ(EnvironmentOf("")["TZ"], "Europe/Berlin");
  });
}

TEST(Launch, KeepsTheZoneToItselfThatTheAgentPutThereForItsOwnUse) {
  InChild([] {
    ASSERT_EQ(unsetenv("TZ"), 0);
    EXPECT_EQ(EnvironmentOf("").count("TZ"), 0u);
    BaseSDK::ASystemZone::Hold();
    ASSERT_NE(getenv("TZ"), nullptr);
    EXPECT_EQ(EnvironmentOf("").count("TZ"), 0u);
    EXPECT_EQ(EnvironmentOf("[Environment]\nTZ = Asia/Tokyo")["TZ"], "Asia/Tokyo");
  });
}

}  // namespace NoxHandlerTest
