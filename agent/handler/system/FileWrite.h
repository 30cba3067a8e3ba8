#pragma once

#include <sys/types.h>

#include <string_view>

namespace NoxHandler {

/// Writing all there is, however many calls that takes. Each returns 0, or the errno of the call
/// that failed.
struct FileWrite {
  /// Where the descriptor stands. Takes from `bytes` what was written.
  static int Next(int fd, std::string_view& bytes);
  /// At `position`, for a descriptor without O_APPEND.
  static int At(int fd, std::string_view bytes, off_t position);
};

}  // namespace NoxHandler
