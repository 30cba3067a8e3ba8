// The plug-in's way to the log.
#include "Common/Log.h"

#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <new>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;

TEST(PluginLog, BuildsNoMessageOfALevelThatIsNotEnabled) {
  const LogCapture log(ALogger::Warning);
  unsigned built = 0;
  const auto message = [&built] {
    ++built;
    return AString(L"message");
  };
  PLUGIN_LOG(Task, Trace, message());
  PLUGIN_LOG(Task, Information, message());
  EXPECT_EQ(0U, built);
  EXPECT_TRUE(log.Lines().empty());
  PLUGIN_LOG(Task, Warning, message());
  EXPECT_EQ(1U, built);
  EXPECT_EQ(1U, log.Lines().size());
}

TEST(PluginLog, TellsWhereALineComesFrom) {
  const LogCapture log;
  PLUGIN_LOG(Frame, Error, L"one");
  PLUGIN_LOG(Scheduler, Trace, L"two");
  PLUGIN_LOG(Task, Information, L"three");
  const int last = __LINE__ - 1;
  ASSERT_EQ(3U, log.Lines().size());
  EXPECT_EQ("Corvane::Agent::Common::PluginBase", log.Lines()[0].m_Channel);
  EXPECT_EQ("Common/PluginBase", log.Lines()[0].m_Source);
  EXPECT_EQ("Corvane::Agent::TaskScheduler", log.Lines()[1].m_Channel);
  EXPECT_EQ("TaskSchedulerObject", log.Lines()[1].m_Source);
  EXPECT_EQ("Corvane::Agent::TaskScheduler", log.Lines()[2].m_Channel);
  EXPECT_EQ("Task", log.Lines()[2].m_Source);
  EXPECT_EQ(last, log.Lines()[2].m_Number);
}

TEST(PluginLog, LeavesALineOutThatCannotBeBuilt) {
  const LogCapture log;
  const auto message = []() -> AString { throw std::bad_alloc(); };
  EXPECT_NO_THROW(PLUGIN_LOG(Task, Error, message()));
  EXPECT_TRUE(log.Lines().empty());
}

}  // namespace
