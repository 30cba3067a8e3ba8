#pragma once

#include <unistd.h>

#include <utility>

namespace NoxHandler {

/// Owns a file descriptor and closes it at the end of the scope.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : m_Fd(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : m_Fd(std::exchange(other.m_Fd, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(m_Fd, other.m_Fd);
    return *this;
  }
  ~FileDescriptor() { Close(); }

  explicit operator bool() const { return m_Fd >= 0; }
  int Get() const { return m_Fd; }
  void Close() {
    if (m_Fd >= 0) {
      (void)::close(std::exchange(m_Fd, -1));
    }
  }

 private:
  int m_Fd = -1;
};

}  // namespace NoxHandler
