#include "ALogRegistry.h"

#include <algorithm>
#include <mutex>

namespace BaseSDK {

namespace {

/// "A::B" covers "A::B" and "A::B::C", not "A::Bc".
bool Covers(const std::string& prefix, const std::string& channel) {
  return channel.starts_with(prefix) &&
         (channel.size() == prefix.size() || channel.compare(prefix.size(), 2, "::") == 0);
}

}  // namespace

ALogRegistry& ALogRegistry::Instance() {
  // Never destroyed: plug-ins log from their static objects too.
  static ALogRegistry& instance = *new ALogRegistry;
  return instance;
}

ALogger& ALogRegistry::Logger(const std::string& channel) {
  const AMutexGuard guard(m_Lock);
  std::unique_ptr<ALogger>& logger = m_Loggers[channel];
  if (!logger) {
    logger.reset(new ALogger(channel, LevelOf(channel)));  // the constructor is private
  }
  return *logger;
}

void ALogRegistry::SetDefaultLevel(ALogger::Level level) {
  const AMutexGuard guard(m_Lock);
  m_DefaultLevel = level;
  ApplyLevels();
}

void ALogRegistry::SetLevel(const std::string& prefix, ALogger::Level level) {
  const AMutexGuard guard(m_Lock);
  m_Levels[prefix] = level;
  ApplyLevels();
}

void ALogRegistry::ResetLevels() {
  const AMutexGuard guard(m_Lock);
  m_Levels.clear();
  ApplyLevels();
}

ALogger::Level ALogRegistry::LevelOf(const std::string& channel) const {
  ALogger::Level level = m_DefaultLevel;
  std::size_t longest = 0;
  for (const auto& [prefix, prefixLevel] : m_Levels) {
    if (Covers(prefix, channel) && prefix.size() >= longest) {
      level = prefixLevel;
      longest = prefix.size();
    }
  }
  return level;
}

void ALogRegistry::ApplyLevels() {
  for (const auto& [channel, logger] : m_Loggers) {
    logger->m_Level.store(LevelOf(channel), std::memory_order_relaxed);
  }
}

void ALogRegistry::AddSink(std::shared_ptr<ALogSink> sink) {
  const std::lock_guard turn(m_SinkTurn);
  const std::unique_lock guard(m_SinkLock);
  m_Sinks.push_back(std::move(sink));
}

void ALogRegistry::RemoveSink(const std::shared_ptr<ALogSink>& sink) {
  const std::lock_guard turn(m_SinkTurn);
  const std::unique_lock guard(m_SinkLock);
  m_Sinks.erase(std::remove(m_Sinks.begin(), m_Sinks.end(), sink), m_Sinks.end());
}

void ALogRegistry::Write(const ALogRecord& record) {
  std::unique_lock turn(m_SinkTurn);
  const std::shared_lock guard(m_SinkLock);
  turn.unlock();
  for (const auto& sink : m_Sinks) {
    sink->Write(record);
  }
}

}  // namespace BaseSDK
