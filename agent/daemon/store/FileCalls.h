#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cerrno>
#include <string>

namespace NoxAgent {

/// Calls `call`, which returns 0 or an errno, again for as long as a signal interrupts it.
template <class Call>
int Uninterrupted(const Call& call) {
  int error = EINTR;
  while (error == EINTR) {
    error = call();
  }
  return error;
}

// Each of these opens what is at the path, flushes it and closes it again. 0 or an errno; what has
// no disk behind it counts as flushed.

int FlushFile(BaseSDK::AFileSystem& files, const std::string& path);
/// Makes new, renamed and deleted names in the directory last.
int FlushDirectory(BaseSDK::AFileSystem& files, const std::string& path);
/// Flushes all that was changed on the disk that the directory is on.
int FlushDiskOf(BaseSDK::AFileSystem& files, const std::string& path);

}  // namespace NoxAgent
