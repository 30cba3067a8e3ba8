#pragma once

#include <BaseSDK/AString.h>

#include <cstdint>
#include <optional>
#include <string>

namespace NoxHandler {

/// How much of the machine a job's processes may take. What is not set is as the agent has it.
///
/// Each Read... reads the value of a key. It returns the reason when the text will not do, else an
/// empty text; nothing is changed when it will not.
struct ProcessLimits {
  std::optional<int> m_Nice;                   ///< -20 to 19
  std::optional<int> m_IoPriority;             ///< class and level, as the system takes them
  std::optional<std::uint64_t> m_MemoryBytes;  ///< for the whole run, or of address space for each
  std::optional<long> m_CpuSeconds;            ///< for the whole run, or for each process
  std::optional<long> m_Files;                 ///< the lowest descriptor that none may have
  std::string m_OomScore;                      ///< -1000 to 1000 in decimal; empty: not set

  BaseSDK::AString ReadNice(const BaseSDK::AString& text);
  /// "idle", "best-effort N" or "realtime N", with a level from 0, the first, to 7.
  BaseSDK::AString ReadIoPriority(const BaseSDK::AString& text);
  /// A whole number with K, M, G or nothing behind it, from 1M to 1024G.
  BaseSDK::AString ReadMemory(const BaseSDK::AString& text);
  BaseSDK::AString ReadCpuTime(const BaseSDK::AString& text);
  BaseSDK::AString ReadFiles(const BaseSDK::AString& text);
  BaseSDK::AString ReadOomScore(const BaseSDK::AString& text);

  /// Whether there are limits that a control group keeps for all processes of a run together.
  bool HasThoseOfGroup() const { return m_MemoryBytes || m_CpuSeconds; }
  /// The others.
  ProcessLimits WithoutThoseOfGroup() const;
  /// m_MemoryBytes as a job has it, with the largest unit that divides it: "512M". REQUIRES: it is
  /// set.
  BaseSDK::AString MemoryText() const;
};

}  // namespace NoxHandler
