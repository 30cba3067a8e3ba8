#include "agent/daemon/store/WholeFile.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>

#include <cerrno>

using BaseSDK::AFileCalls;
using BaseSDK::AFileSystem;

namespace NoxAgent {
namespace {

int ReadOpen(AFileSystem& files, int fd, std::string& bytes, FileIdentity& identity) {
  AFileSystem::Info before;
  AFileSystem::Info after;
  int error = files.GetOpenInfo(fd, before);
  error = error != 0 ? error : AFileCalls::ReadAll(files, fd, BaseSDK::AFile::MaxReadBytes, bytes);
  error = error != 0 ? error : files.GetOpenInfo(fd, after);
  identity = FileIdentity(after);
  return error == 0 && FileIdentity(before) != identity ? ESTALE : error;
}

}  // namespace

int ReadFile(AFileSystem& files, const std::string& path, std::string& bytes,
             FileIdentity& identity) {
  int fd = -1;
  const int error = files.Open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, fd);
  if (error != 0) {
    return error;
  }
  const int readError = ReadOpen(files, fd, bytes, identity);
  (void)files.Close(fd);  // nothing was written that could be lost
  return readError;
}

int MoveUnchanged(AFileSystem& files, const std::string& from, const std::string& to,
                  const FileIdentity& expected) {
  if (const int error = files.Rename(from.c_str(), to.c_str(), false); error != 0) {
    return error;
  }
  AFileSystem::Info info;
  const int error = files.GetInfo(to.c_str(), info);
  if (error == 0 && FileIdentity(info).IsRenamed(expected)) {
    return 0;
  }
  // Another file took its place between the look and the rename. That one goes back to `from`. If
  // yet another has come to `from` by now, it is the newer one and counts.
  if (files.Rename(to.c_str(), from.c_str(), false) == EEXIST) {
    (void)files.Unlink(to.c_str());
  }
  return ESTALE;
}

}  // namespace NoxAgent
