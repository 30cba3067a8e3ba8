#pragma once

#include <BaseSDK/AString.h>

#include <atomic>
#include <string>

namespace BaseSDK {

/// The log of one channel, such as "Corvane::Agent::TaskScheduler". Loggers are made on first use
/// and live until the process ends, so references stay valid also while a plug-in unloads. What
/// becomes of a message is set up in ALogConfig. May be used from any thread.
class ALogger {
 public:
  /// Most severe first.
  enum Level { Error, Warning, Notice, Information, Debug, Trace };

  /// The same object for the same name; the name is copied.
  static ALogger& GetLogger(const char* channel);

  ALogger(const ALogger&) = delete;
  ALogger& operator=(const ALogger&) = delete;

  /// Ask before building a message: for a disabled level this comparison is all a call costs.
  bool IsEnabled(Level level) const {
    // Relaxed: a message more or less around a change of the level does no harm.
    return static_cast<int>(level) <= m_Level.load(std::memory_order_relaxed);
  }

  /// Hands the message to every sink, whatever its level: ask IsEnabled first, or use ALOG.
  /// `source` (file or module) and `line` say where it comes from; nothing of the arguments is
  /// kept.
  void Log(Level level, const AString& message, const char* source, int line);

  const std::string& Channel() const { return m_Channel; }

 private:
  friend class ALogRegistry;
  ALogger(std::string channel, Level level);

  const std::string m_Channel;
  std::atomic<int> m_Level;
};

}  // namespace BaseSDK

/// Builds and logs `message`, an expression for an AString, only when the level is enabled.
#define ALOG(logger, level, source, message)                \
  do {                                                      \
    ::BaseSDK::ALogger& aLogger_ = (logger);                \
    if (aLogger_.IsEnabled(level)) {                        \
      aLogger_.Log((level), (message), (source), __LINE__); \
    }                                                       \
  } while (false)
