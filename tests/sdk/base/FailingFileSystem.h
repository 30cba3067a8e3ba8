#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cerrno>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace BaseSDK {

/// Forwards to the system, records every call by name, and fails the calls it is told to.
class FailingFileSystem : public AFileSystem {
 public:
  FailingFileSystem() : m_Before(Replace(this)) {}
  FailingFileSystem(const FailingFileSystem&) = delete;
  FailingFileSystem& operator=(const FailingFileSystem&) = delete;
  ~FailingFileSystem() override { (void)Replace(m_Before); }

  /// The call of that number, counted from 0 over all calls, gives `error`.
  void FailCall(std::size_t number, int error) {
    m_FailFrom = number;
    m_FailCount = 1;
    m_Error = error;
  }
  /// From that call on, `count` calls give `error`.
  void FailCalls(std::size_t number, std::size_t count, int error) {
    FailCall(number, error);
    m_FailCount = count;
  }
  /// Every write transfers at most so many bytes; 0 takes none and reports no error.
  void LimitWrites(std::size_t bytes) { m_MostPerWrite = bytes; }

  const std::vector<std::string>& Calls() const { return m_Calls; }
  std::size_t OpenDescriptors() const { return m_OpenCount; }

  int Open(const char* path, int flags, unsigned mode, int& fd) override {
    const int error = Note("open", [&] { return AFileSystem::Open(path, flags, mode, fd); });
    m_OpenCount += error == 0 ? 1 : 0;
    return error;
  }
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override {
    return Note("read", [&] { return AFileSystem::Read(fd, buffer, size, got); });
  }
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    const std::size_t most = size < m_MostPerWrite ? size : m_MostPerWrite;
    return Note("write", [&] { return AFileSystem::Write(fd, data, most, written); });
  }
  int Sync(int fd) override {
    return Note("sync", [&] { return AFileSystem::Sync(fd); });
  }
  /// A close that fails has closed all the same, as on Linux.
  int Close(int fd) override {
    --m_OpenCount;
    const int closed = AFileSystem::Close(fd);
    return Note("close", [closed] { return closed; });
  }
  int SetMode(int fd, unsigned mode) override {
    return Note("setmode", [&] { return AFileSystem::SetMode(fd, mode); });
  }
  int GetInfo(const char* path, Info& info) override {
    return Note("info", [&] { return AFileSystem::GetInfo(path, info); });
  }
  int Rename(const char* from, const char* to, bool replace) override {
    return Note("rename", [&] { return AFileSystem::Rename(from, to, replace); });
  }
  int Unlink(const char* path) override {
    return Note("unlink", [&] { return AFileSystem::Unlink(path); });
  }
  int OpenDirectory(const char* path, unsigned long& handle) override {
    const int error = Note("opendir", [&] { return AFileSystem::OpenDirectory(path, handle); });
    m_OpenCount += error == 0 ? 1 : 0;
    return error;
  }
  int ReadDirectory(unsigned long handle, const char*& name) override {
    return Note("readdir", [&] { return AFileSystem::ReadDirectory(handle, name); });
  }
  int CloseDirectory(unsigned long handle) override {
    --m_OpenCount;
    const int closed = AFileSystem::CloseDirectory(handle);
    return Note("closedir", [closed] { return closed; });
  }

 private:
  int Note(const char* name, const std::function<int()>& call) {
    const std::size_t number = m_Calls.size();
    m_Calls.emplace_back(name);
    const bool fails = number >= m_FailFrom && number - m_FailFrom < m_FailCount;
    return fails ? m_Error : call();
  }

  AFileSystem* const m_Before;
  std::vector<std::string> m_Calls;
  std::size_t m_FailFrom = 0;
  std::size_t m_FailCount = 0;
  int m_Error = 0;
  std::size_t m_MostPerWrite = static_cast<std::size_t>(-1);
  std::size_t m_OpenCount = 0;
};

}  // namespace BaseSDK
