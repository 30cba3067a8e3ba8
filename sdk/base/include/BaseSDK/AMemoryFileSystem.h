#pragma once

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace BaseSDK {

/// A file system in memory, for simulations and tests: a year is simulated in seconds, and nothing
/// is left on the disk. AFileSystem::Replace puts an object in force; it does not do that itself.
///
/// There are regular files and the directories they lie in, no links. Permissions are noted and
/// never refuse anything. Directories list their entries sorted. Nothing is ever lost, synced or
/// not. May be used from any thread.
class AMemoryFileSystem : public AFileSystem {
 public:
  /// For SetFreeBytes: the disk never becomes full, as at first.
  static constexpr std::size_t Unlimited = static_cast<std::size_t>(-1);

  /// Makes an empty directory. Those above it need not be there; an existing one stays as it is.
  void MakeDirectory(const std::string& path);
  /// From now on files grow by so many bytes altogether; then the disk is full (ENOSPC). Deleting
  /// files makes no room.
  void SetFreeBytes(std::size_t bytes);
  /// While set, opening a file for writing, Rename and Unlink fail with EROFS. A descriptor that is
  /// open for writing already still writes.
  void SetReadOnly(bool readOnly);
  // These lay files out and look at them. They bypass the calls of AFileSystem and the bounds set
  // above. Paths are full ones.

  /// The entries of the directory, sorted, without "." and ".."; none when it is not there.
  std::vector<std::string> Names(const std::string& directory) const;
  /// Whether there is a file of that path.
  bool Has(const std::string& path) const;
  /// The content of the file; empty when it is not there.
  std::string ReadFile(const std::string& path) const;
  /// Creates or replaces the file, with mode 0644; makes its directory when it is not there.
  void WriteFile(const std::string& path, const std::string& content);
  void RemoveFile(const std::string& path);
  /// How many descriptors and directory handles are open. A test of leaks asks for 0.
  std::size_t OpenHandles() const;

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  int Sync(int fd) override;
  int SyncData(int fd) override { return Sync(fd); }
  int SyncAll(int fd) override { return Sync(fd); }
  int Close(int fd) override;
  int SetMode(int fd, unsigned mode) override;
  int GetInfo(const char* path, Info& info) override;
  int GetOpenInfo(int fd, Info& info) override;
  int Rename(const char* from, const char* to, bool replace) override;
  int Unlink(const char* path) override;
  int OpenDirectory(const char* path, unsigned long& handle) override;
  int ReadDirectory(unsigned long handle, const char*& name) override;
  int CloseDirectory(unsigned long handle) override;
  /// The same numbers in every new object.
  std::uint64_t UniqueNumber() override;

 private:
  struct File {
    std::string m_Content;
    unsigned m_Mode = 0;
    std::uint64_t m_Number = 0;
    std::int64_t m_Changes = 0;  ///< how often it was changed; stands for its times
  };
  using FilePtr = std::shared_ptr<File>;
  struct OpenFile {
    FilePtr m_File;  ///< null for a directory
    std::size_t m_Offset = 0;
    bool m_Writes = false;
  };
  struct Listing {
    std::vector<std::string> m_Names;
    std::size_t m_Next = 0;
  };

  int OpenRegular(const std::string& path, int flags, unsigned mode, FilePtr& file)
      NOX_REQUIRES(m_Lock);
  FilePtr NewFile(std::string content, unsigned mode) NOX_REQUIRES(m_Lock);
  static Info InfoOf(const FilePtr& file);
  /// Null when there is no such file.
  FilePtr Find(const std::string& path) const NOX_REQUIRES(m_Lock);

  mutable AMutex m_Lock;
  /// By the path of the directory, without a slash at its end: its files by their names.
  std::map<std::string, std::map<std::string, FilePtr>> m_Directories NOX_GUARDED_BY(m_Lock);
  std::map<int, OpenFile> m_OpenFiles NOX_GUARDED_BY(m_Lock);
  std::map<unsigned long, Listing> m_Listings NOX_GUARDED_BY(m_Lock);
  int m_LastFd NOX_GUARDED_BY(m_Lock) = 1000000;  // far from the system's, so as not to be mistaken
  unsigned long m_LastHandle NOX_GUARDED_BY(m_Lock) = 0;
  std::size_t m_FreeBytes NOX_GUARDED_BY(m_Lock) = Unlimited;
  bool m_ReadOnly NOX_GUARDED_BY(m_Lock) = false;
  std::uint64_t m_LastNumber NOX_GUARDED_BY(m_Lock) = 0;
  std::uint64_t m_LastFile NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace BaseSDK
