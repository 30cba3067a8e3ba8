#include "agent/handler/job/JobFile.h"

#include "agent/handler/job/JobError.h"
#include "agent/handler/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

JobError ReadError(const char* action, const AString& fileName) {
  return JobError(
      AString("cannot %1 the job file %2: %3").Arg(action, fileName, std::strerror(errno)));
}

void RefuseStrangers(const char* what, const AString& name, const struct stat& info) {
  const bool isRoot = geteuid() == 0;
  const bool isOwnersOwn = info.st_uid == 0 || info.st_uid == geteuid();
  // Users often have a group of their own, which may write what they write.
  const mode_t others = isRoot ? S_IWGRP | S_IWOTH : S_IWOTH;
  if (isOwnersOwn && (info.st_mode & others) == 0) {
    return;
  }
  throw JobError(
      AString(isRoot
                  ? "the job %1 %2 is to belong to root and to be writable by root alone (chown "
                    "root, chmod go-w), for jobs run with root's rights"
                  : "the job %1 %2 is to belong to the agent's user or root and not to be writable "
                    "by everybody (chmod o-w), for jobs run with the agent's rights")
          .Arg(what, name));
}

void RefuseUnsafe(const AString& fileName, const struct stat& info) {
  if (!S_ISREG(info.st_mode)) {
    throw JobError(AString("the job file %1 is not a regular file").Arg(fileName));
  }
  RefuseStrangers("file", fileName, info);
  JobFile::CheckDirectory(AString(std::filesystem::path(fileName.ToUtf8()).parent_path().c_str()));
}

std::string ReadBytes(int fd, const AString& fileName) {
  std::string bytes(JobFile::MaxBytes + 1, '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t got = read(fd, bytes.data() + size, bytes.size() - size);
    if (got == 0) {
      bytes.resize(size);
      return bytes;
    }
    if (got < 0 && errno != EINTR) {
      throw ReadError("read", fileName);
    }
    size += got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  throw JobError(AString("the job file %1 is larger than 64 KiB").Arg(fileName));
}

}  // namespace

std::optional<std::string> JobFile::Read(const AString& fileName) {
  const FileDescriptor file(
      open(fileName.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file && errno == ENOENT) {
    return std::nullopt;
  }
  struct stat info {};
  if (!file || fstat(file.Get(), &info) != 0) {
    throw ReadError("open", fileName);
  }
  RefuseUnsafe(fileName, info);
  return ReadBytes(file.Get(), fileName);
}

void JobFile::CheckDirectory(const AString& directory) {
  struct stat info {};
  if (stat(directory.ToUtf8().c_str(), &info) == 0) {
    RefuseStrangers("directory", directory, info);
  }
}

}  // namespace NoxHandler
