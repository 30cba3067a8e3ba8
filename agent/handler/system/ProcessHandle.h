#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <sys/types.h>

namespace NoxHandler {

/// Handles of processes (pidfds): a handle means the same process for good, while its number is
/// used again once the process is gone. Readable when the process has ended.
struct ProcessHandle {
  /// Empty, and errno says why, when there is no such process or no descriptor left.
  static FileDescriptor Open(pid_t pid);
  /// Does nothing to a process that has ended or is not ours to signal.
  static void Signal(const FileDescriptor& handle, int number);
};

}  // namespace NoxHandler
