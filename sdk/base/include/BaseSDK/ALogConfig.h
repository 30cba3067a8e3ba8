#pragma once

#include <BaseSDK/ALogSink.h>
#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <memory>

namespace BaseSDK {

/// What is logged and where it goes, for the whole process. At first the level is Information and
/// there are no sinks. May be called from any thread; changes reach loggers that exist already.
struct ALogConfig {
  /// For channels that no SetLevel matches.
  static void SetDefaultLevel(ALogger::Level level);
  /// For the channel `prefix` and those below it ("Corvane::Agent" matches
  /// "Corvane::Agent::TaskScheduler", not "Corvane::Agents"). The longest prefix that matches wins.
  static void SetLevel(const AString& prefix, ALogger::Level level);
  /// Forgets every SetLevel.
  static void ResetLevels();

  static void AddSink(std::shared_ptr<ALogSink> sink);
  /// On return no thread is within the sink any more. Not to be called from within a sink.
  static void RemoveSink(const std::shared_ptr<ALogSink>& sink);

  /// "error", "warning", "notice", "information" (or "info"), "debug", "trace" in any case. False,
  /// and `level` left alone, for anything else.
  static bool ParseLevel(const AString& text, ALogger::Level& level);
  /// The words above.
  static const char* LevelName(ALogger::Level level);
};

}  // namespace BaseSDK
