#include "tests/support/FailingFileSystem.h"

#include <algorithm>
#include <cerrno>

namespace TestSupport {

using BaseSDK::AMutexGuard;

namespace {

std::string LastPart(const char* path) {
  const std::string text = path;
  return text.substr(text.rfind('/') + 1);
}

}  // namespace

void FailingFileSystem::FailAt(unsigned number, int error) {
  const AMutexGuard guard(m_Lock);
  m_Plan.m_FailAt[number] = error;
}

void FailingFileSystem::FailAll(Kind kind, int error) {
  const AMutexGuard guard(m_Lock);
  m_Plan.m_FailAll[kind] = error;
}

void FailingFileSystem::KillAt(unsigned number, std::size_t partialBytes) {
  const AMutexGuard guard(m_Lock);
  m_Plan.m_KillAt = number;
  m_Plan.m_PartialBytes = partialBytes;
}

void FailingFileSystem::ShortenAt(unsigned number, std::size_t bytes) {
  const AMutexGuard guard(m_Lock);
  m_Plan.m_ShortenAt[number] = bytes;
}

void FailingFileSystem::Reset() {
  const AMutexGuard guard(m_Lock);
  m_Plan = {};
  m_Counts.clear();
  m_Count = 0;
  m_History.clear();
}

unsigned FailingFileSystem::Count() const {
  const AMutexGuard guard(m_Lock);
  return m_Count;
}

unsigned FailingFileSystem::Count(Kind kind) const {
  const AMutexGuard guard(m_Lock);
  const auto found = m_Counts.find(kind);
  return found != m_Counts.end() ? found->second : 0;
}

bool FailingFileSystem::IsDead() const {
  const AMutexGuard guard(m_Lock);
  return m_Plan.m_KillAt && m_Count >= *m_Plan.m_KillAt;
}

std::vector<std::string> FailingFileSystem::History() const {
  const AMutexGuard guard(m_Lock);
  return {m_History.begin(), m_History.end()};
}

int FailingFileSystem::Admit(Kind kind, const std::string& words, std::size_t* most) {
  const AMutexGuard guard(m_Lock);
  m_History.push_back(words);
  if (m_History.size() > HistorySize) {
    m_History.pop_front();
  }
  ++m_Counts[kind];
  const unsigned number = ++m_Count;
  if (m_Plan.m_KillAt && number >= *m_Plan.m_KillAt) {
    if (most != nullptr) {
      *most = number == *m_Plan.m_KillAt ? std::min(*most, m_Plan.m_PartialBytes) : 0;
    }
    return EIO;
  }
  const auto failing = m_Plan.m_FailAt.find(number);
  const auto failingKind = m_Plan.m_FailAll.find(kind);
  const int error = failing != m_Plan.m_FailAt.end()        ? failing->second
                    : failingKind != m_Plan.m_FailAll.end() ? failingKind->second
                                                            : 0;
  const auto shortened = m_Plan.m_ShortenAt.find(number);
  if (most != nullptr) {
    *most = error != 0                              ? 0
            : shortened != m_Plan.m_ShortenAt.end() ? std::min(*most, shortened->second)
                                                    : *most;
  }
  return error;
}

int FailingFileSystem::Open(const char* path, int flags, unsigned mode, int& fd) {
  fd = -1;
  const int error = Admit(OpenCall, "open " + LastPart(path));
  return error != 0 ? error : ForwardingFileSystem::Open(path, flags, mode, fd);
}

int FailingFileSystem::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  const int error = Admit(ReadCall, "read");
  return error != 0 ? error : ForwardingFileSystem::Read(fd, buffer, size, got);
}

int FailingFileSystem::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  std::size_t most = size;
  const int error = Admit(WriteCall, "write", &most);
  written = 0;
  const int result = most > 0 ? ForwardingFileSystem::Write(fd, data, most, written) : 0;
  return error != 0 ? error : result;
}

int FailingFileSystem::Sync(int fd) {
  const int error = Admit(SyncCall, "sync");
  return error != 0 ? error : ForwardingFileSystem::Sync(fd);
}

int FailingFileSystem::SyncData(int fd) {
  const int error = Admit(SyncCall, "sync data");
  return error != 0 ? error : ForwardingFileSystem::SyncData(fd);
}

int FailingFileSystem::SyncAll(int fd) {
  const int error = Admit(SyncCall, "sync all");
  return error != 0 ? error : ForwardingFileSystem::SyncAll(fd);
}

int FailingFileSystem::Close(int fd) {
  const int error = Admit(CloseCall, "close");
  const int result = ForwardingFileSystem::Close(fd);
  return error != 0 ? error : result;
}

int FailingFileSystem::SetMode(int fd, unsigned mode) {
  const int error = Admit(SetModeCall, "set mode");
  return error != 0 ? error : ForwardingFileSystem::SetMode(fd, mode);
}

int FailingFileSystem::GetInfo(const char* path, Info& info) {
  const int error = Admit(GetInfoCall, "get info of " + LastPart(path));
  return error != 0 ? error : ForwardingFileSystem::GetInfo(path, info);
}

int FailingFileSystem::Rename(const char* from, const char* to, bool replace) {
  const int error = Admit(RenameCall, "rename " + LastPart(from) + " -> " + LastPart(to));
  return error != 0 ? error : ForwardingFileSystem::Rename(from, to, replace);
}

int FailingFileSystem::Unlink(const char* path) {
  const int error = Admit(UnlinkCall, "unlink " + LastPart(path));
  return error != 0 ? error : ForwardingFileSystem::Unlink(path);
}

int FailingFileSystem::OpenDirectory(const char* path, unsigned long& handle) {
  handle = 0;
  const int error = Admit(OpenDirectoryCall, "open directory");
  return error != 0 ? error : ForwardingFileSystem::OpenDirectory(path, handle);
}

int FailingFileSystem::ReadDirectory(unsigned long handle, const char*& name) {
  name = nullptr;
  const int error = Admit(ReadDirectoryCall, "read directory");
  return error != 0 ? error : ForwardingFileSystem::ReadDirectory(handle, name);
}

int FailingFileSystem::CloseDirectory(unsigned long handle) {
  const int error = Admit(CloseDirectoryCall, "close directory");
  const int result = ForwardingFileSystem::CloseDirectory(handle);
  return error != 0 ? error : result;
}

}  // namespace TestSupport
