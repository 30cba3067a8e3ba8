#include "agent/handler/system/ProcessHandle.h"

#include <sys/syscall.h>
#include <unistd.h>

// Raw system calls: the C library's header declares its functions without C linkage.

CFileDescriptor CProcessHandle::Open(pid_t pid) {
  return CFileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

void CProcessHandle::Signal(const CFileDescriptor& handle, int number) {
  (void)syscall(SYS_pidfd_send_signal, handle.Get(), number, nullptr, 0);
}
