// The system calls that take space on a disk, defined here: the program's own definitions are taken
// before those of the C library.
#include "tests/agent/handler/FullDisk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <deque>
#include <string>

namespace {

std::atomic<const std::string*> fullDirectory{nullptr};

bool IsOnFullDisk(const std::string& path) {
  const std::string* const directory = fullDirectory;
  return directory != nullptr && path.starts_with(*directory);
}

std::string PathOf(int fd) {
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  return readlink(link.c_str(), path.data(), path.size() - 1) > 0 ? path.data() : "";
}

// Whether a file of the full disk would have to grow for this; -1 stands for its end.
bool NeedsSpace(int fd, std::size_t size, off_t position) {
  struct stat info {};
  if (fullDirectory == nullptr || fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
      !IsOnFullDisk(PathOf(fd))) {
    return false;
  }
  return position < 0 || position + static_cast<off_t>(size) > info.st_size;
}

long WriteAt(int fd, const void* bytes, std::size_t size, off_t position) {
#ifdef __i386__
  return syscall(SYS_pwrite64, fd, bytes, size, static_cast<std::uint32_t>(position),
                 static_cast<std::uint32_t>(static_cast<std::uint64_t>(position) >> 32));
#else
  return syscall(SYS_pwrite64, fd, bytes, size, position);
#endif
}

int NoSpace() {
  errno = ENOSPC;
  return -1;
}

}  // namespace

namespace NoxHandlerTest {

FullDisk::FullDisk(const std::filesystem::path& directory) {
  // Never freed, for a thread may still look at a name when its disk has room again.
  static auto& names = *new std::deque<std::string>;
  names.push_back(std::filesystem::canonical(directory).string() + "/");
  fullDirectory = &names.back();
}

FullDisk::~FullDisk() {
  fullDirectory = nullptr;
}

}  // namespace NoxHandlerTest

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  struct stat info {};
  if ((flags & O_CREAT) != 0 && IsOnFullDisk(path) && lstat(path, &info) != 0) {
    return NoSpace();
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ssize_t write(int fd, const void* bytes, std::size_t size) {
  return NeedsSpace(fd, size, -1) ? NoSpace()
                                  : static_cast<ssize_t>(syscall(SYS_write, fd, bytes, size));
}

ssize_t pwrite(int fd, const void* bytes, std::size_t size, off_t position) {
  return NeedsSpace(fd, size, position) ? NoSpace()
                                        : static_cast<ssize_t>(WriteAt(fd, bytes, size, position));
}
}
