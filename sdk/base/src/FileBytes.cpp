#include "FileBytes.h"

#include "Retry.h"

#include <fcntl.h>

#include <array>
#include <cerrno>

namespace BaseSDK {

int OpenFile(AFileSystem& files, const char* path, int flags, unsigned mode, int& fd) {
  fd = -1;
  return Retry([&] { return files.Open(path, flags, mode, fd); });
}

int WriteAll(AFileSystem& files, int fd, const void* data, std::size_t size, std::size_t& written) {
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

int ReadAll(AFileSystem& files, int fd, std::size_t most, std::string& bytes) {
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

int FlushFile(AFileSystem& files, int fd) {
  const int error = Retry([&] { return files.Sync(fd); });
  return error == EINVAL || error == EROFS ? 0 : error;
}

int FlushDirectory(AFileSystem& files, const std::string& directory) {
  int fd = -1;
  const int openError = OpenFile(files, directory.c_str(), O_RDONLY | O_DIRECTORY, 0, fd);
  if (openError != 0) {
    return openError;
  }
  const int error = FlushFile(files, fd);
  const int closeError = files.Close(fd);
  return error != 0 ? error : closeError;
}

std::string DirectoryOf(std::string_view path) {
  const std::string_view part = DirectoryPart(path);
  return std::string(part.empty() ? "." : part);
}

std::string_view DirectoryPart(std::string_view path) {
  return path.substr(0, path.rfind('/') + 1);  // npos + 1 is 0
}

}  // namespace BaseSDK
