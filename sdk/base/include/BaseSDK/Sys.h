#pragma once

#include <cstddef>

namespace BaseSDK::Wrappers {

/// The system's calls with result codes of AResult.h (0 for success) instead of errno. They go
/// through AFileSystem; all but the closing ones start again when a signal interrupts them. Names
/// are bytes (AStringEncoder::Local). May be called from any thread.
struct Sys {
  /// `flags` and `mode` as for open(2), the descriptor closes itself on exec. `fd` is -1 after a
  /// failure.
  static unsigned long Open(const char* name, int flags, int mode, int& fd);
  /// Writes all of it, however many pieces that takes, and flushes it to the disk where the
  /// descriptor has one, so that success means that it is there. `written` counts the bytes
  /// written, also after a failure.
  static unsigned long Write(int fd, const void* data, std::size_t size, std::size_t& written);
  /// The descriptor is gone also when this fails.
  static unsigned long Close(int fd);

  /// `handle` stands for the open directory stream until Closedir; 0 after a failure.
  static unsigned long Opendir(const char* name, unsigned long& handle);
  /// The next entry in the directory's own order, "." and ".." included. `name` is valid until the
  /// next call on this handle, and null after the last entry or a failure.
  static unsigned long Readdir(unsigned long handle, const char*& name);
  /// Ends the handle, also when this fails.
  static unsigned long Closedir(unsigned long handle);
};

}  // namespace BaseSDK::Wrappers
