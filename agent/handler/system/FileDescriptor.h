#pragma once

#include <unistd.h>

#include <utility>

/// Owns a file descriptor and closes it at the end of the scope.
class CFileDescriptor {
 public:
  CFileDescriptor() = default;
  explicit CFileDescriptor(int fd) : m_Fd(fd) {}
  CFileDescriptor(CFileDescriptor&& other) noexcept : m_Fd(std::exchange(other.m_Fd, -1)) {}
  CFileDescriptor& operator=(CFileDescriptor&& other) noexcept {
    std::swap(m_Fd, other.m_Fd);
    return *this;
  }
  ~CFileDescriptor() { Close(); }

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
