#include "ALogRegistry.h"

#include <BaseSDK/ALogger.h>

namespace BaseSDK {

ALogger& ALogger::GetLogger(const char* channel) {
  return ALogRegistry::Instance().Logger(channel != nullptr ? channel : "");
}

ALogger::ALogger(std::string channel, Level level)
    : m_Channel(std::move(channel)), m_Level(level) {}

void ALogger::Log(Level level, const AString& message, const char* source, int line) {
  ALogRegistry::Instance().Write({level, m_Channel, message, source != nullptr ? source : "", line,
                                  std::chrono::system_clock::now()});
}

}  // namespace BaseSDK
