#include "agent/handler/process/Launch.h"

#include <BaseSDK/ASystemZone.h>

#include <gtest/gtest.h>

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
       Launch(job, {"a", true, false, false}, "token").m_Environment) {
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
