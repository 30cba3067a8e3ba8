#include "agent/daemon/process/LogSetup.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/Directories.h"
#include "agent/daemon/process/QueuedSink.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSinks.h>

#include <algorithm>

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;
using BaseSDK::ALogSinks;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

// The plug-ins' own words are for those who look for a fault in them. What an operator is to know,
// the agent says, and the command handler of its runs.
constexpr struct {
  const char* m_Channel;
  ALogger::Level m_Level;
} DefaultLevels[] = {
    {"Corvane::Agent", ALogger::Warning},
    {"Corvane::Agent::Daemon", ALogger::Information},
    {"Corvane::Agent::CommandHandler", ALogger::Information},
};

std::shared_ptr<QueuedSink> standardError;

bool IsBelow(const AString& channel, const AString& other) {
  const AString prefix = other + "::";
  return (channel + "::").Left(prefix.Length()) == prefix;
}

// A level that the administrator gives a channel is that of all below it, whatever the default.
void SetDefaultLevels(const LogSettings& log) {
  ALogConfig::SetDefaultLevel(ALogger::Information);
  for (const auto& fallback : DefaultLevels) {
    const bool isGiven =
        std::any_of(log.m_ChannelLevels.begin(), log.m_ChannelLevels.end(),
                    [&](const auto& given) { return IsBelow(fallback.m_Channel, given.first); });
    if (!isGiven) {
      ALogConfig::SetLevel(fallback.m_Channel, fallback.m_Level);
    }
  }
}

}  // namespace

void LogSetup::Open(const Settings& settings) {
  SetLevels(settings.m_Log);
  standardError = std::make_shared<QueuedSink>(ALogSinks::Stderr());
  ALogConfig::AddSink(standardError);
  const LogSettings& log = settings.m_Log;
  if (log.m_File.IsEmpty()) {
    return;
  }
  const AString path = settings.Resolve(log.m_File);
  if (const std::size_t slash = path.ReverseFind(L'/'); slash != AString::npos && slash > 0) {
    Directories::Make(path.Left(slash), Directories::Private);
  }
  AString error;
  const auto file = ALogSinks::RotatingFile(path, static_cast<std::size_t>(log.m_FileBytes),
                                            static_cast<unsigned>(log.m_Files), error);
  if (file == nullptr) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("cannot open the log file %1: %2").Arg(path, error));
  }
  ALogConfig::AddSink(file);
}

void LogSetup::Flush() {
  if (standardError != nullptr) {
    (void)standardError->Flush();
  }
}

void LogSetup::SetLevels(const LogSettings& log) {
  ALogConfig::ResetLevels();
  if (log.m_Level.has_value()) {
    ALogConfig::SetDefaultLevel(*log.m_Level);
  } else {
    SetDefaultLevels(log);
  }
  for (const auto& [channel, level] : log.m_ChannelLevels) {
    ALogConfig::SetLevel(channel, level);
  }
}

}  // namespace NoxAgent
