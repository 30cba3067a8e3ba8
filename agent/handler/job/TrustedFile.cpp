#include "agent/handler/job/TrustedFile.h"

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

class TrustedFileReader {
 public:
  TrustedFileReader(const char* what, const AString& name) : m_What(what), m_Name(name) {}

  std::optional<std::string> Find() const {
    const FileDescriptor file(
        open(m_Name.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file && errno == ENOENT) {
      return std::nullopt;
    }
    struct stat info {};
    if (!file || fstat(file.Get(), &info) != 0) {
      throw SystemError("open");
    }
    RefuseUnsafe(info);
    return ReadBytes(file.Get());
  }

  static void CheckDirectory(const AString& what, const AString& directory) {
    struct stat info {};
    if (stat(directory.ToUtf8().c_str(), &info) == 0) {
      RefuseStrangers(AString("the directory %1 of the %2").Arg(directory, what), info);
    }
  }

 private:
  JobError SystemError(const char* action) const {
    return JobError(
        AString("cannot %1 the %2 %3: %4").Arg(action, m_What, m_Name, strerror(errno)));
  }

  void RefuseUnsafe(const struct stat& info) const {
    if (!S_ISREG(info.st_mode)) {
      throw JobError(AString("the %1 %2 is not a regular file").Arg(m_What, m_Name));
    }
    RefuseStrangers(AString("the %1 %2").Arg(m_What, m_Name), info);
    CheckDirectory(m_What, std::filesystem::path(m_Name.ToUtf8()).parent_path().c_str());
  }

  // A user who can write the file, or replace it, has the rights that the job runs with.
  static void RefuseStrangers(const AString& what, const struct stat& info) {
    const bool isRoot = geteuid() == 0;
    const bool isOwnersOwn = info.st_uid == 0 || info.st_uid == geteuid();
    // Users often have a group of their own, which may write what they write.
    const mode_t others = isRoot ? S_IWGRP | S_IWOTH : S_IWOTH;
    if (isOwnersOwn && (info.st_mode & others) == 0) {
      return;
    }
    throw JobError(
        AString(isRoot ? "%1 is to belong to root and to be writable by root alone (chown "
                         "root, chmod go-w), for jobs run with root's rights"
                       : "%1 is to belong to the agent's user or root and not to be "
                         "writable by everybody (chmod o-w), for jobs run with the agent's rights")
            .Arg(what));
  }

  std::string ReadBytes(int fd) const {
    std::string bytes(TrustedFile::MaxBytes + 1, '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
      const ssize_t got = read(fd, bytes.data() + size, bytes.size() - size);
      if (got == 0) {
        bytes.resize(size);
        return bytes;
      }
      if (got < 0 && errno != EINTR) {
        throw SystemError("read");
      }
      size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    throw JobError(AString("the %1 %2 is larger than 64 KiB").Arg(m_What, m_Name));
  }

  const AString m_What;
  const AString m_Name;
};

}  // namespace

std::string TrustedFile::Read(const char* what, const AString& fileName) {
  auto bytes = Find(what, fileName);
  if (!bytes) {
    throw JobError(AString("there is no %1 %2").Arg(what, fileName));
  }
  return *std::move(bytes);
}

std::optional<std::string> TrustedFile::Find(const char* what, const AString& fileName) {
  return TrustedFileReader(what, fileName).Find();
}

void TrustedFile::CheckDirectory(const char* what, const AString& directory) {
  TrustedFileReader::CheckDirectory(what, directory);
}

}  // namespace NoxHandler
