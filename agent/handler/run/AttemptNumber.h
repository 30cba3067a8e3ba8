#pragma once

#include "agent/handler/Log.h"

#include <BaseSDK/AString.h>

namespace NoxHandler {

/// Which attempt of a run it is, counted from 1, and how many there are at most; or which command
/// beside the run.
struct AttemptNumber {
  unsigned m_Number = 1;
  unsigned m_Most = 1;
  const char* m_Beside = "";  ///< the key of the job that names the command; empty for an attempt

  bool IsLast() const { return m_Number >= m_Most; }
  /// What goes in front of the words about its end, in the task's output file: "on_failure: ".
  BaseSDK::AString Prefix() const {
    return *m_Beside == '\0' ? BaseSDK::AString() : BaseSDK::AString("%1: ").Arg(m_Beside);
  }
  /// What goes behind the task's name in the log: ": on_failure".
  BaseSDK::AString LogTitle() const {
    return *m_Beside == '\0' ? BaseSDK::AString() : BaseSDK::AString(": %1").Arg(m_Beside);
  }
  /// What goes behind the words about its end: ", attempt 1 of 4", or nothing when there is but
  /// one.
  BaseSDK::AString Suffix() const {
    return m_Most == 1 ? BaseSDK::AString()
                       : BaseSDK::AString(", attempt %1 of %2")
                             .Arg(DecimalText(static_cast<long>(m_Number)),
                                  DecimalText(static_cast<long>(m_Most)));
  }
};

}  // namespace NoxHandler
