#include "agent/daemon/process/LogSetup.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/Directories.h"
#include "agent/daemon/process/QueuedSink.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSinks.h>

using BaseSDK::ALogConfig;
using BaseSDK::ALogSinks;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr unsigned DirectoryMode = 0750;  // jobs' output is in the log

std::shared_ptr<QueuedSink> g_StandardError;

}  // namespace

void LogSetup::Open(const Settings& settings) {
  SetLevels(settings.m_Log);
  g_StandardError = std::make_shared<QueuedSink>(ALogSinks::Stderr());
  ALogConfig::AddSink(g_StandardError);
  const LogSettings& log = settings.m_Log;
  if (log.m_File.IsEmpty()) {
    return;
  }
  const AString path = settings.Resolve(log.m_File);
  if (const std::size_t slash = path.ReverseFind(L'/'); slash != AString::npos && slash > 0) {
    Directories::Make(path.Left(slash), DirectoryMode);
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
  if (g_StandardError != nullptr) {
    (void)g_StandardError->Flush();
  }
}

void LogSetup::SetLevels(const LogSettings& log) {
  ALogConfig::ResetLevels();
  ALogConfig::SetDefaultLevel(log.m_Level);
  for (const auto& [channel, level] : log.m_ChannelLevels) {
    ALogConfig::SetLevel(channel, level);
  }
}

}  // namespace NoxAgent
