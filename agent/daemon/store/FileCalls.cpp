#include "agent/daemon/store/FileCalls.h"

#include <fcntl.h>

using BaseSDK::AFileSystem;

namespace NoxAgent {
namespace {

using SyncCall = int (AFileSystem::*)(int fd);

int Flush(AFileSystem& files, const std::string& path, int flags, SyncCall sync) {
  int fd = -1;
  const int openError =
      Uninterrupted([&] { return files.Open(path.c_str(), O_RDONLY | flags, 0, fd); });
  if (openError != 0) {
    return openError;
  }
  const int error = Uninterrupted([&] { return (files.*sync)(fd); });
  (void)files.Close(fd);  // it was only read
  return error == EINVAL || error == EROFS ? 0 : error;
}

}  // namespace

int FlushFile(AFileSystem& files, const std::string& path) {
  return Flush(files, path, O_NOFOLLOW, &AFileSystem::Sync);
}

int FlushDirectory(AFileSystem& files, const std::string& path) {
  return Flush(files, path, O_DIRECTORY, &AFileSystem::Sync);
}

int FlushDiskOf(AFileSystem& files, const std::string& path) {
  return Flush(files, path, O_DIRECTORY, &AFileSystem::SyncAll);
}

}  // namespace NoxAgent
