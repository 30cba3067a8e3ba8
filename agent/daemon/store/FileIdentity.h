#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cstdint>

namespace NoxAgent {

/// File systems tell their times in nanoseconds.
inline constexpr std::int64_t NanosecondsPerSecond = 1000000000;

/// Which file it was, and in which condition. Two equal ones mean the same bytes, except for a file
/// that is written twice within one tick of its file system's clock.
struct FileIdentity {
  std::uint64_t m_Device = 0;
  std::uint64_t m_Number = 0;
  std::uint64_t m_Size = 0;
  std::int64_t m_Modified = 0;
  std::int64_t m_Changed = 0;

  FileIdentity() = default;
  explicit FileIdentity(const BaseSDK::AFileSystem::Info& info)
      : m_Device(info.m_Device),
        m_Number(info.m_Number),
        m_Size(info.m_Size),
        m_Modified(info.m_Modified),
        m_Changed(info.m_Changed) {}

  bool operator==(const FileIdentity&) const = default;

  /// Whether a change after `now` would show. A file that was written just now may be written again
  /// with the same size and the same time: the clocks of file systems are coarse.
  bool IsSettled(long now) const {
    constexpr std::int64_t SecondsToSettle = 2;
    return m_Modified / NanosecondsPerSecond + SecondsToSettle < now;
  }

  /// Whether `other` is this file after a rename, or unchanged: a rename changes m_Changed alone.
  bool IsRenamed(FileIdentity other) const {
    other.m_Changed = m_Changed;
    return *this == other;
  }
};

}  // namespace NoxAgent
