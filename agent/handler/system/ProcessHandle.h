#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <sys/types.h>

namespace NoxHandler {

/// Handles of processes (pidfds). A handle always means the same process, while a process number is
/// used again when its process is gone. A handle is readable when its process has ended.
struct ProcessHandle {
  /// Empty when there is no such process or no descriptor is left; errno says which.
  static FileDescriptor Open(pid_t pid);
  /// Sends the signal; does nothing when the process has ended or the agent may not signal it.
  static void Signal(const FileDescriptor& handle, int number);
};

}  // namespace NoxHandler
