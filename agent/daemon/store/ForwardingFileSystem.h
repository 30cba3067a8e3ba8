#pragma once

#include <BaseSDK/AFileSystem.h>

namespace NoxAgent {

/// Passes every call of the system on to another file system. A class that derives from it
/// overrides the calls that it treats otherwise. ReplaceFile is not passed on: its steps are.
class ForwardingFileSystem : public BaseSDK::AFileSystem {
 public:
  /// `below` is borrowed and outlives this object.
  explicit ForwardingFileSystem(AFileSystem& below) : m_Below(below) {}
  // A copy would be mistaken for an object above the other one.
  ForwardingFileSystem(const ForwardingFileSystem&) = delete;
  ForwardingFileSystem& operator=(const ForwardingFileSystem&) = delete;

  int Open(const char* path, int flags, unsigned mode, int& fd) override {
    return m_Below.Open(path, flags, mode, fd);
  }
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override {
    return m_Below.Read(fd, buffer, size, got);
  }
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    return m_Below.Write(fd, data, size, written);
  }
  int Sync(int fd) override { return m_Below.Sync(fd); }
  int SyncData(int fd) override { return m_Below.SyncData(fd); }
  int SyncAll(int fd) override { return m_Below.SyncAll(fd); }
  int Close(int fd) override { return m_Below.Close(fd); }
  int SetMode(int fd, unsigned mode) override { return m_Below.SetMode(fd, mode); }
  int GetInfo(const char* path, Info& info) override { return m_Below.GetInfo(path, info); }
  int GetOpenInfo(int fd, Info& info) override { return m_Below.GetOpenInfo(fd, info); }
  int Rename(const char* from, const char* to, bool replace) override {
    return m_Below.Rename(from, to, replace);
  }
  int Unlink(const char* path) override { return m_Below.Unlink(path); }
  int OpenDirectory(const char* path, unsigned long& handle) override {
    return m_Below.OpenDirectory(path, handle);
  }
  int ReadDirectory(unsigned long handle, const char*& name) override {
    return m_Below.ReadDirectory(handle, name);
  }
  int CloseDirectory(unsigned long handle) override { return m_Below.CloseDirectory(handle); }
  void MakeSafe() override { m_Below.MakeSafe(); }
  std::uint64_t UniqueNumber() override { return m_Below.UniqueNumber(); }

 protected:
  AFileSystem& Below() { return m_Below; }

 private:
  AFileSystem& m_Below;
};

}  // namespace NoxAgent
