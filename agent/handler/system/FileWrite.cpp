#include "agent/handler/system/FileWrite.h"

#include <unistd.h>

#include <cerrno>

namespace NoxHandler {

int FileWrite::Next(int fd, std::string_view& bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int FileWrite::At(int fd, std::string_view bytes, off_t position) {
  while (!bytes.empty()) {
    const ssize_t written = pwrite(fd, bytes.data(), bytes.size(), position);
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
      position += written;
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace NoxHandler
