#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace NoxAgent {

/// A file system in memory that tells what is on the disk from what only the system's memory holds,
/// and can lose the latter. What is written, made, renamed and deleted gets to the disk by Sync,
/// SyncData and SyncAll alone. Numbers of deleted files are given to new ones, as on many disks;
/// times are counted and never repeat.
///
/// Not for use by several threads at once.
class CrashDisk final : public BaseSDK::AFileSystem {
 public:
  /// What a power cut takes of all that was not flushed.
  enum class Loss {
    All,
    None,
    Latest,  ///< what happened after some moment
    Any,     ///< sectors of 512 bytes, sizes and changes of entries, each for itself
  };
  static constexpr std::size_t SectorSize = 512;

  /// Makes an empty directory, which is on the disk.
  void MakeDirectory(const std::string& path);
  /// The power fails and comes back. What was open is closed. A file whose content was flushed once
  /// keeps its time; others may get an earlier one of theirs.
  void CutPower(Loss loss, std::mt19937_64& random);
  /// How many descriptors and directory handles are open.
  std::size_t OpenHandles() const { return m_Open.size() + m_Listings.size(); }

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  int Sync(int fd) override;
  int SyncData(int fd) override;
  int SyncAll(int fd) override;
  int Close(int fd) override;
  int SetMode(int fd, unsigned mode) override;
  int GetInfo(const char* path, Info& info) override;
  int GetOpenInfo(int fd, Info& info) override;
  /// From one directory into the same one.
  int Rename(const char* from, const char* to, bool replace) override;
  int Unlink(const char* path) override;
  int OpenDirectory(const char* path, unsigned long& handle) override;
  int ReadDirectory(unsigned long handle, const char*& name) override;
  int CloseDirectory(unsigned long handle) override;
  /// The same numbers in every new object.
  std::uint64_t UniqueNumber() override;

 private:
  /// Bytes that were written to a file; without any, the file was cut to nothing.
  struct Change {
    std::uint64_t m_Moment;
    std::size_t m_Offset;
    std::string m_Bytes;
    std::int64_t m_Modified;
  };
  struct File {
    std::uint64_t m_Number = 0;
    unsigned m_Mode = 0;
    std::string m_Content;
    std::int64_t m_Modified = 0;
    std::int64_t m_Changed = 0;
    std::string m_OnDisk;
    std::int64_t m_ModifiedOnDisk = 0;
    bool m_WasFlushed = false;
    std::vector<Change> m_Unflushed;
  };
  using FilePtr = std::shared_ptr<File>;
  using Entries = std::map<std::string, FilePtr>;  ///< by path
  /// What paths stand for since a moment: no file for a name that is gone.
  struct EntryChange {
    std::uint64_t m_Moment;
    std::vector<std::pair<std::string, FilePtr>> m_Entries;
  };
  struct OpenFile {
    FilePtr m_File;           ///< null for a directory
    std::string m_Directory;  ///< of which this is a descriptor
    std::size_t m_Offset = 0;
    bool m_Writes = false;
  };
  struct Listing {
    std::vector<std::string> m_Names;
    std::size_t m_Next = 0;
  };
  class Cut;

  FilePtr Find(const std::string& path) const;
  FilePtr NewFile(unsigned mode);
  bool HasDirectoryOf(const std::string& path) const;
  int OpenRegular(const std::string& path, int flags, unsigned mode, FilePtr& file);
  void ChangeContent(File& file, std::size_t offset, std::string bytes);
  void ChangeEntries(EntryChange change);
  static void FlushContent(File& file, bool withTime);
  void FlushEntries(const std::string& directory);
  static Info InfoOf(const FilePtr& file);

  std::set<std::string> m_Directories;
  Entries m_Entries;
  Entries m_EntriesOnDisk;
  std::vector<EntryChange> m_UnflushedEntries;
  std::map<std::uint64_t, std::weak_ptr<File>> m_Files;  ///< by number
  std::map<int, OpenFile> m_Open;
  std::map<unsigned long, Listing> m_Listings;
  std::uint64_t m_Moment = 0;
  int m_LastFd = 1000000;  // far from the system's
  unsigned long m_LastHandle = 0;
  std::uint64_t m_LastUnique = 0;
};

}  // namespace NoxAgent
