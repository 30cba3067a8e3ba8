#include "ALogRegistry.h"

#include <BaseSDK/ALogConfig.h>

#include <array>

namespace BaseSDK {

namespace {

constexpr std::array LevelNames = {"error", "warning", "notice", "information", "debug", "trace"};

}  // namespace

void ALogConfig::SetDefaultLevel(ALogger::Level level) {
  ALogRegistry::Instance().SetDefaultLevel(level);
}

void ALogConfig::SetLevel(const AString& prefix, ALogger::Level level) {
  ALogRegistry::Instance().SetLevel(prefix.ToUtf8(), level);
}

void ALogConfig::ResetLevels() {
  ALogRegistry::Instance().ResetLevels();
}

void ALogConfig::AddSink(std::shared_ptr<ALogSink> sink) {
  ALogRegistry::Instance().AddSink(std::move(sink));
}

void ALogConfig::RemoveSink(const std::shared_ptr<ALogSink>& sink) {
  ALogRegistry::Instance().RemoveSink(sink);
}

bool ALogConfig::ParseLevel(const AString& text, ALogger::Level& level) {
  for (std::size_t i = 0; i < LevelNames.size(); ++i) {
    if (text.EqualsNoCase(LevelNames[i])) {
      level = static_cast<ALogger::Level>(i);
      return true;
    }
  }
  if (text.EqualsNoCase(L"info")) {
    level = ALogger::Information;
    return true;
  }
  return false;
}

const char* ALogConfig::LevelName(ALogger::Level level) {
  return LevelNames[static_cast<std::size_t>(level)];
}

}  // namespace BaseSDK
