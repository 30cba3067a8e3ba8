#pragma once

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NoxHandler {

/// What is noted on disk about a run for as long as it goes on, so that an agent that comes after
/// one that was killed finds the processes which that one left running.
struct RunRecord {
  pid_t m_Pid = 0;  ///< of the command, which is also its session and process group
  unsigned long long m_StartTicks = 0;
  std::string m_BootId;
  std::string m_Token;  ///< value of the variable NOX_RUN_ID that the run's processes were given
};

struct NamedRunRecord {
  BaseSDK::AString m_TaskId;
  RunRecord m_Record;

  /// What it takes on disk; one sector, so that it is never there by half.
  static constexpr std::size_t Bytes = 512;

  /// Exactly so many bytes: a line of text and zeros. Empty when it does not fit, which no task ID
  /// of a batch brings about.
  std::string Encode() const;
  /// Nothing for bytes that are no whole record.
  static std::optional<NamedRunRecord> Decode(std::string_view bytes);
};

}  // namespace NoxHandler
