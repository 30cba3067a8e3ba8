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

/// Files in memory: a year's simulation in seconds, and nothing left of it on the disk. Regular
/// files and the directories they lie in, no links, no permissions. Directories list their entries
/// sorted. What is synced and what is not makes no difference. It does not put itself in force.
/// May be used from any thread.
class AMemoryFileSystem : public AFileSystem {
 public:
  static constexpr std::size_t Unlimited = static_cast<std::size_t>(-1);

  void MakeDirectory(const std::string& path);
  /// From now on a write takes no more than this many bytes before the disk is full (ENOSPC). What
  /// is deleted makes no room.
  void SetFreeBytes(std::size_t bytes);
  /// EROFS for all that would change something.
  void SetReadOnly(bool readOnly);
  // To lay out what there is and to look at it, past the calls of AFileSystem. Paths are full; Read
  // of a missing file is empty.
  std::vector<std::string> Names(const std::string& directory) const;
  bool Has(const std::string& path) const;
  std::string ReadFile(const std::string& path) const;
  void WriteFile(const std::string& path, const std::string& content);
  void RemoveFile(const std::string& path);
  /// Descriptors and directory handles that are open: 0 whenever nobody is inside a call.
  std::size_t OpenHandles() const;

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  int Sync(int fd) override;
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
    std::int64_t m_Changes = 0;  ///< stands for its times
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
  /// Directory to entries.
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
