#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace NoxHandler {

/// A part of what a task's runs have put out, for readers that follow it.
struct OutputPart {
  static constexpr std::size_t MaxBytes = 64 * 1024;

  BaseSDK::AString m_Text;   ///< empty when there is no more yet; bytes that are not UTF-8 replaced
  std::uint64_t m_Next = 0;  ///< where the next part begins

  /// From this position on, as far as MaxBytes go; from the beginning of the file when it does not
  /// hold the position, because it was cut back or somebody has removed it: 0 is any file's
  /// beginning. Nothing when there is no file. Throws std::runtime_error when it cannot be read.
  /// The file may be written meanwhile. [any thread]
  static std::optional<OutputPart> Read(const BaseSDK::AString& fileName, std::uint64_t position);
};

}  // namespace NoxHandler
