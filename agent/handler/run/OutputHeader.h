#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NoxHandler {

/// The first line of an output file that was cut back: how many bytes of output went before those
/// that follow it. So each byte of a file has a position among all that the runs of the task have
/// put out, which stays the same when the file is cut back: by it a reader keeps its place.
struct OutputHeader {
  /// No such line is longer.
  static constexpr std::size_t MaxBytes = 80;

  std::uint64_t m_Dropped = 0;  ///< the position of the first byte behind the line
  std::size_t m_Size = 0;       ///< of the line itself, its end included; 0 when there is none

  /// The one that a file with these bytes begins with; zeros when it begins with none.
  static OutputHeader Parse(std::string_view bytes);
  static std::string Line(std::uint64_t dropped);
  /// The one of an open file.
  static OutputHeader Of(int fd);

  bool operator==(const OutputHeader&) const = default;
};

}  // namespace NoxHandler
