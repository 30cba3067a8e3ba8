#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// A length of time as a job gives it: "90" and "90s" are seconds, "5m" minutes, "2h" hours.
struct Duration {
  /// Ten years.
  static constexpr long MaxSeconds = 10L * 365 * 86400;

  /// In seconds; any that is longer than MaxSeconds is MaxSeconds + 1. Nothing for another text.
  static std::optional<long> Parse(const BaseSDK::AString& text);

  /// Reads one from `least` to `most` seconds into `seconds`. The reason when the text is none,
  /// else empty; `seconds` is untouched then.
  static BaseSDK::AString Read(const BaseSDK::AString& text, long least, long most, long& seconds);

  /// The shortest of these forms for it, such as "15m".
  static BaseSDK::AString Text(long seconds);
};

}  // namespace NoxHandler
