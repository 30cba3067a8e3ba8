#include "agent/handler/system/ProcessHandle.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace NoxHandler {

// Raw system calls: the C library's header declares its functions without C linkage.

FileDescriptor ProcessHandle::Open(pid_t pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

void ProcessHandle::Signal(const FileDescriptor& handle, int number) {
  (void)syscall(SYS_pidfd_send_signal, handle.Get(), number, nullptr, 0);
}

}  // namespace NoxHandler
