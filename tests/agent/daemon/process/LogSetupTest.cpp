#include "agent/daemon/process/LogSetup.h"

#include <BaseSDK/ALogConfig.h>

#include <gtest/gtest.h>

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;

namespace NoxAgent {
namespace {

class LogSetupTest : public testing::Test {
 protected:
  ~LogSetupTest() override {
    ALogConfig::ResetLevels();
    ALogConfig::SetDefaultLevel(ALogger::Information);
  }
  static ALogger::Level LevelOf(const char* channel) {
    const ALogger& logger = ALogger::GetLogger(channel);
    int level = ALogger::Trace;
    while (level > ALogger::Error && !logger.IsEnabled(static_cast<ALogger::Level>(level))) {
      --level;
    }
    return static_cast<ALogger::Level>(level);
  }

  static constexpr const char* Agent = "Corvane::Agent::Daemon";
  static constexpr const char* Handler = "Corvane::Agent::CommandHandler";
  static constexpr const char* Scheduler = "Corvane::Agent::TaskScheduler";
  static constexpr const char* Frame = "Corvane::Agent::Common::PluginBase";
  static constexpr const char* Other = "Example::LogHandler";
};

TEST_F(LogSetupTest, PluginsAreHeardFromWarningOnAndTheAgentAndItsRunsFromInformationOn) {
  LogSetup::SetLevels({});
  EXPECT_EQ(LevelOf(Agent), ALogger::Information);
  EXPECT_EQ(LevelOf(Handler), ALogger::Information);
  EXPECT_EQ(LevelOf(Scheduler), ALogger::Warning);
  EXPECT_EQ(LevelOf(Frame), ALogger::Warning);
  EXPECT_EQ(LevelOf(Other), ALogger::Information);
}

TEST_F(LogSetupTest, ALevelIsThatOfEveryChannel) {
  for (const ALogger::Level level : {ALogger::Error, ALogger::Information, ALogger::Trace}) {
    LogSettings log;
    log.m_Level = level;
    LogSetup::SetLevels(log);
    for (const char* const channel : {Agent, Handler, Scheduler, Frame, Other}) {
      EXPECT_EQ(LevelOf(channel), level) << channel;
    }
  }
  LogSetup::SetLevels({});
  EXPECT_EQ(LevelOf(Scheduler), ALogger::Warning);
}

TEST_F(LogSetupTest, AChannelsLevelIsThatOfAllBelowIt) {
  LogSettings log;
  log.m_ChannelLevels["Corvane::Agent"] = ALogger::Debug;
  LogSetup::SetLevels(log);
  for (const char* const channel : {Agent, Handler, Scheduler, Frame}) {
    EXPECT_EQ(LevelOf(channel), ALogger::Debug) << channel;
  }
  EXPECT_EQ(LevelOf(Other), ALogger::Information);
}

TEST_F(LogSetupTest, AChannelsLevelLeavesTheOthersAsTheyAre) {
  LogSettings log;
  log.m_ChannelLevels[Scheduler] = ALogger::Trace;
  log.m_ChannelLevels["Corvane::Agent::Dae"] = ALogger::Error;  // of no channel
  LogSetup::SetLevels(log);
  EXPECT_EQ(LevelOf(Scheduler), ALogger::Trace);
  EXPECT_EQ(LevelOf(Agent), ALogger::Information);
  EXPECT_EQ(LevelOf(Handler), ALogger::Information);
  EXPECT_EQ(LevelOf(Frame), ALogger::Warning);
  log.m_Level = ALogger::Error;
  LogSetup::SetLevels(log);
  EXPECT_EQ(LevelOf(Scheduler), ALogger::Trace);
  EXPECT_EQ(LevelOf(Agent), ALogger::Error);
}

}  // namespace
}  // namespace NoxAgent
