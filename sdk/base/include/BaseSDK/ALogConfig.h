#pragma once

#include <BaseSDK/ALogSink.h>
#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <memory>

namespace BaseSDK {

/// What is logged and where it goes, for the whole process. At first the level is Information and
/// there are no sinks. May be called from any thread; changes reach loggers that exist already.
struct ALogConfig {
  /// The level of channels that no SetLevel matches.
  static void SetDefaultLevel(ALogger::Level level);
  /// The level of the channel `prefix` and those below it ("Corvane::Agent" matches
  /// "Corvane::Agent::TaskScheduler", not "Corvane::Agents"). The longest prefix that matches wins;
  /// a second call for a prefix replaces the first.
  static void SetLevel(const AString& prefix, ALogger::Level level);
  /// Forgets every SetLevel; the default level stays.
  static void ResetLevels();

  /// From now on every message goes to `sink` as well, which is not null and is kept until
  /// RemoveSink. Not to be called from within a sink.
  static void AddSink(std::shared_ptr<ALogSink> sink);
  /// When this returns, no thread is within the sink any more. Not to be called from within a sink.
  static void RemoveSink(const std::shared_ptr<ALogSink>& sink);

  /// Reads "error", "warning", "notice", "information" (or "info"), "debug" or "trace", in any
  /// case. False for anything else; `level` is then left alone.
  static bool ParseLevel(const AString& text, ALogger::Level& level);
  /// The word that ParseLevel reads for the level.
  static const char* LevelName(ALogger::Level level);
};

}  // namespace BaseSDK
