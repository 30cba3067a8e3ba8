#pragma once

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NoxHandler {

/// What is noted on disk about a run while it goes on. When an agent is killed, the next one finds
/// by it the processes that were left running.
struct RunRecord {
  pid_t m_Pid = 0;  ///< of the command, which is also its session and process group
  unsigned long long m_StartTicks = 0;
  std::string m_BootId;
  std::string m_Token;  ///< value of the variable NOX_RUN_ID that the run's processes were given
};

/// A record with the task it belongs to, as it lies on disk.
struct NamedRunRecord {
  BaseSDK::AString m_TaskId;
  RunRecord m_Record;

  /// Its size on disk: one sector, so it is never there by half.
  static constexpr std::size_t Bytes = 512;

  /// Its Bytes bytes: a line of text and zeros. Empty when it does not fit, which the length of a
  /// task ID of a batch rules out.
  std::string Encode() const;
  /// The record in these bytes; nothing when they are no whole record.
  static std::optional<NamedRunRecord> Decode(std::string_view bytes);
};

}  // namespace NoxHandler
