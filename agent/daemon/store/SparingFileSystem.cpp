#include "agent/daemon/store/SparingFileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

using BaseSDK::AMutexGuard;

namespace NoxAgent {

SparingFileSystem::SparingFileSystem(AFileSystem& below) : ForwardingFileSystem(below) {
  Refill();
}

SparingFileSystem::~SparingFileSystem() {
  if (m_Spare >= 0) {
    (void)::close(m_Spare);
  }
}

int SparingFileSystem::Open(const char* path, int flags, unsigned mode, int& fd) {
  return WithSpare([&] { return ForwardingFileSystem::Open(path, flags, mode, fd); });
}

int SparingFileSystem::Close(int fd) {
  const int error = ForwardingFileSystem::Close(fd);
  Refill();
  return error;
}

int SparingFileSystem::OpenDirectory(const char* path, unsigned long& handle) {
  return WithSpare([&] { return ForwardingFileSystem::OpenDirectory(path, handle); });
}

int SparingFileSystem::CloseDirectory(unsigned long handle) {
  const int error = ForwardingFileSystem::CloseDirectory(handle);
  Refill();
  return error;
}

template <class OpenCall>
int SparingFileSystem::WithSpare(const OpenCall& open) {
  const int error = open();
  if (error != EMFILE && error != ENFILE) {
    return error;
  }
  AMutexGuard guard(m_Lock);
  if (m_Spare < 0) {
    return error;
  }
  (void)::close(m_Spare);
  m_Spare = -1;
  const int secondError = open();
  if (secondError != 0) {
    FillSpare();  // nothing was opened whose closing would do it
  }
  return secondError;
}

void SparingFileSystem::Refill() {
  AMutexGuard guard(m_Lock);
  FillSpare();
}

void SparingFileSystem::FillSpare() {
  if (m_Spare < 0) {
    m_Spare = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  }
}

}  // namespace NoxAgent
