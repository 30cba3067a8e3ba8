#pragma once

#include <sys/types.h>

#include <string_view>

namespace NoxHandler {

/// Writes all bytes, however many calls that takes. Each routine returns 0, or the errno of the
/// call that failed.
struct FileWrite {
  /// Writes where the descriptor stands, and removes from `bytes` what was written, also when it
  /// fails.
  static int Next(int fd, std::string_view& bytes);
  /// Writes at `position` of a file that was opened without O_APPEND.
  static int At(int fd, std::string_view bytes, off_t position);
};

}  // namespace NoxHandler
