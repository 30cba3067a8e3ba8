#pragma once

#include "agent/handler/Log.h"

#include <BaseSDK/AString.h>

namespace NoxHandler {

/// Which attempt of a run it is, counted from 1, and how many there are at most.
struct AttemptNumber {
  unsigned m_Number = 1;
  unsigned m_Most = 1;

  bool IsLast() const { return m_Number >= m_Most; }
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
