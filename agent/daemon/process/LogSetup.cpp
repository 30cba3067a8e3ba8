#include "agent/daemon/process/LogSetup.h"

#include "agent/daemon/AgentError.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSinks.h>

using BaseSDK::ALogConfig;
using BaseSDK::ALogSinks;
using BaseSDK::AString;

namespace NoxAgent {

void LogSetup::Open(const Settings& settings) {
  SetLevels(settings.m_Log);
  ALogConfig::AddSink(ALogSinks::Stderr());
  const LogSettings& log = settings.m_Log;
  if (log.m_File.IsEmpty()) {
    return;
  }
  AString error;
  const auto file = ALogSinks::RotatingFile(settings.Resolve(log.m_File),
                                            static_cast<std::size_t>(log.m_FileBytes),
                                            static_cast<unsigned>(log.m_Files), error);
  if (file == nullptr) {
    throw AgentError(
        AgentError::Kind::Failure,
        AString("cannot open the log file %1: %2").Arg(settings.Resolve(log.m_File), error));
  }
  ALogConfig::AddSink(file);
}

void LogSetup::SetLevels(const LogSettings& log) {
  ALogConfig::ResetLevels();
  ALogConfig::SetDefaultLevel(log.m_Level);
  for (const auto& [channel, level] : log.m_ChannelLevels) {
    ALogConfig::SetLevel(channel, level);
  }
}

}  // namespace NoxAgent
