#pragma once

#include <BaseSDK/AString.h>

namespace NoxHandler {

/// What a job wants when its run has failed.
struct RetryRule {
  static constexpr long MostTimes = 10;
  static constexpr long LeastSeconds = 30;
  static constexpr long MostSeconds = 900;

  /// The task is left to the scheduler, which hands it over again at its next reading of the task
  /// files. Otherwise the handler tries again by itself, m_Times at most, and then no more.
  bool m_IsHourly = true;
  unsigned m_Times = 0;
  long m_EverySeconds = 0;  ///< from the end of an attempt to the beginning of the next

  bool operator==(const RetryRule&) const = default;

  /// Reads "never", "hourly" or "N every T", such as "3 every 5m", into `rule`. The reason when the
  /// text is none of them, else empty; `rule` is untouched then.
  static BaseSDK::AString Read(const BaseSDK::AString& text, RetryRule& rule);
};

}  // namespace NoxHandler
