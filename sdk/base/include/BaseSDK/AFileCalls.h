#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cerrno>
#include <cstddef>
#include <string>

namespace BaseSDK {

/// Steps of several calls of a file system. Each returns 0 or an errno, and starts a call again
/// that a signal has interrupted, except for a close: the descriptor is gone then.
struct AFileCalls {
  /// Calls `call`, which returns 0 or an errno, again for as long as a signal interrupts it.
  template <class Call>
  static int Retry(const Call& call) {
    int error = 0;
    do {
      error = call();
    } while (error == EINTR);
    return error;
  }

  static int Open(AFileSystem& files, const char* path, int flags, unsigned mode, int& fd);
  /// Goes on after short writes; `written` counts also after a failure.
  static int WriteAll(AFileSystem& files, int fd, const void* data, std::size_t size,
                      std::size_t& written);
  /// Appends all from where the descriptor stands to `bytes`; EFBIG when that makes more than
  /// `most`.
  static int ReadAll(AFileSystem& files, int fd, std::size_t most, std::string& bytes);

  // What has no disk behind it, such as a pipe, counts as flushed.

  static int Flush(AFileSystem& files, int fd);
  /// Flushes the file at the path; a symbolic link is not followed.
  static int FlushFile(AFileSystem& files, const std::string& path);
  /// Flushes a directory, so that a new, renamed or deleted name in it stays so.
  static int FlushDirectory(AFileSystem& files, const std::string& path);
  /// Flushes all that was changed on the disk that the directory is on.
  static int FlushDiskOf(AFileSystem& files, const std::string& path);

  /// The directory that holds `path`, for FlushDirectory. Ask before you change what is to be
  /// flushed: this takes memory, and a change must not end in an exception.
  static std::string DirectoryOf(const std::string& path);
};

}  // namespace BaseSDK
