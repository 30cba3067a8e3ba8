#pragma once

#include <BaseSDK/ALogSink.h>
#include <BaseSDK/ALogger.h>
#include <BaseSDK/AMutex.h>

#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

namespace BaseSDK {

/// All loggers, levels and sinks of the process: what is behind ALogger and ALogConfig, whose
/// headers describe the operations. [any thread]
class ALogRegistry {
 public:
  static ALogRegistry& Instance();

  ALogger& Logger(const std::string& channel) NOX_EXCLUDES(m_Lock);
  void SetDefaultLevel(ALogger::Level level) NOX_EXCLUDES(m_Lock);
  void SetLevel(const std::string& prefix, ALogger::Level level) NOX_EXCLUDES(m_Lock);
  void ResetLevels() NOX_EXCLUDES(m_Lock);

  void AddSink(std::shared_ptr<ALogSink> sink);
  void RemoveSink(const std::shared_ptr<ALogSink>& sink);
  void Write(const ALogRecord& record);

 private:
  ALogger::Level LevelOf(const std::string& channel) const NOX_REQUIRES(m_Lock);
  void ApplyLevels() NOX_REQUIRES(m_Lock);

  AMutex m_Lock;
  std::map<std::string, std::unique_ptr<ALogger>> m_Loggers NOX_GUARDED_BY(m_Lock);
  std::map<std::string, ALogger::Level> m_Levels NOX_GUARDED_BY(m_Lock);
  ALogger::Level m_DefaultLevel NOX_GUARDED_BY(m_Lock) = ALogger::Information;

  /// Taken for the moment of taking m_SinkLock, which prefers readers: threads that log without a
  /// pause would otherwise keep a change of the sinks waiting for ever.
  std::mutex m_SinkTurn;
  /// Shared by the threads that log, so that none waits for another's sink; alone for changes, so
  /// that a removed sink is out of use. Never held together with m_Lock.
  std::shared_mutex m_SinkLock;
  std::vector<std::shared_ptr<ALogSink>> m_Sinks;
};

}  // namespace BaseSDK
