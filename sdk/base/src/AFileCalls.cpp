#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>

#include <array>
#include <cerrno>

namespace BaseSDK {

namespace {

using SyncCall = int (AFileSystem::*)(int fd);

int FlushBy(AFileSystem& files, int fd, SyncCall sync) {
  const int error = AFileCalls::Retry([&] { return (files.*sync)(fd); });
  return error == EINVAL || error == EROFS ? 0 : error;
}

int OpenAndFlush(AFileSystem& files, const std::string& path, int flags, SyncCall sync) {
  int fd = -1;
  const int openError = AFileCalls::Open(files, path.c_str(), O_RDONLY | flags, 0, fd);
  if (openError != 0) {
    return openError;
  }
  const int error = FlushBy(files, fd, sync);
  const int closeError = files.Close(fd);
  return error != 0 ? error : closeError;
}

}  // namespace

int AFileCalls::Open(AFileSystem& files, const char* path, int flags, unsigned mode, int& fd) {
  fd = -1;
  return Retry([&] { return files.Open(path, flags, mode, fd); });
}

int AFileCalls::WriteAll(AFileSystem& files, int fd, const void* data, std::size_t size,
                         std::size_t& written) {
  const char* const bytes = static_cast<const char*>(data);
  written = 0;
  while (written < size) {
    std::size_t count = 0;
    const int error =
        Retry([&] { return files.Write(fd, bytes + written, size - written, count); });
    written += count;
    if (error != 0) {
      return error;
    }
    if (count == 0) {
      return EIO;  // neither progress nor a reason: trying on would never end
    }
  }
  return 0;
}

int AFileCalls::ReadAll(AFileSystem& files, int fd, std::size_t most, std::string& bytes) {
  std::array<char, 16384> buffer;
  for (;;) {
    std::size_t got = 0;
    const int error = Retry([&] { return files.Read(fd, buffer.data(), buffer.size(), got); });
    if (error != 0 || got == 0) {
      return error;
    }
    if (got > most - bytes.size()) {
      return EFBIG;
    }
    bytes.append(buffer.data(), got);
  }
}

int AFileCalls::Flush(AFileSystem& files, int fd) {
  return FlushBy(files, fd, &AFileSystem::Sync);
}

int AFileCalls::FlushFile(AFileSystem& files, const std::string& path) {
  return OpenAndFlush(files, path, O_NOFOLLOW, &AFileSystem::Sync);
}

int AFileCalls::FlushDirectory(AFileSystem& files, const std::string& path) {
  return OpenAndFlush(files, path, O_DIRECTORY, &AFileSystem::Sync);
}

int AFileCalls::FlushDiskOf(AFileSystem& files, const std::string& path) {
  return OpenAndFlush(files, path, O_DIRECTORY, &AFileSystem::SyncAll);
}

std::string AFileCalls::DirectoryOf(const std::string& path) {
  const std::string part = path.substr(0, path.rfind('/') + 1);  // npos + 1 is 0
  return part.empty() ? "." : part;
}

}  // namespace BaseSDK
