#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace BaseSDK {

/// The one back end of every file system call of the kit: AFile and Wrappers::Sys go through it.
/// The default forwards to the system; tests put one in place that fails on demand or lives in
/// memory, best by deriving from this class and overriding a single call.
///
/// Every call returns 0 or an errno and never retries: EINTR and short transfers reach the caller,
/// who deals with them. Paths are bytes ended by a zero. Calls come from any thread.
class AFileSystem {
 public:
  /// What the system knows of a file, as far as the kit needs it.
  struct Info {
    unsigned m_Mode = 0;  ///< type and permission bits, as in st_mode
    // Together these tell which file it is, and whether it was changed, replaced or written to.
    std::uint64_t m_Device = 0;
    std::uint64_t m_Number = 0;   ///< on its device
    std::uint64_t m_Size = 0;     ///< in bytes
    std::int64_t m_Modified = 0;  ///< its content, in nanoseconds since the epoch
    std::int64_t m_Changed = 0;   ///< also its names and permissions
  };

  virtual ~AFileSystem() = default;

  /// The one in force, never null. Borrowed: whoever put it there owns it.
  static AFileSystem& Current();
  /// Puts `fileSystem` in force, the default when null, and returns the one before (null when that
  /// was the default). The caller sees to it that no call is under way in the old one.
  static AFileSystem* Replace(AFileSystem* fileSystem);

  /// `flags` and `mode` as for open(2). `fd` is -1 after a failure.
  virtual int Open(const char* path, int flags, unsigned mode, int& fd);
  /// Reads `size` bytes at most from where the descriptor stands. `got` is 0 at the end of the
  /// file.
  virtual int Read(int fd, void* buffer, std::size_t size, std::size_t& got);
  /// Writes `size` bytes at most where the descriptor stands. `written` may be less.
  virtual int Write(int fd, const void* data, std::size_t size, std::size_t& written);
  /// Flushes a file or, opened as one, a directory to the disk.
  virtual int Sync(int fd);
  /// Flushes what a file holds, without its times.
  virtual int SyncData(int fd);
  /// Flushes all that was changed on the disk that the open file or directory is on.
  virtual int SyncAll(int fd);
  /// The descriptor is gone also when this fails.
  virtual int Close(int fd);
  /// Sets the permission bits of an open file, whatever the umask.
  virtual int SetMode(int fd, unsigned mode);
  /// What is known of the entry itself: symbolic links are not followed.
  virtual int GetInfo(const char* path, Info& info);
  /// The same of an open file.
  virtual int GetOpenInfo(int fd, Info& info);
  /// With `replace` false an existing target is EEXIST, checked and renamed in one step.
  virtual int Rename(const char* from, const char* to, bool replace);
  /// Deletes the entry, as unlink(2): no directories.
  virtual int Unlink(const char* path);

  /// `handle` stands for the open directory; 0 after a failure.
  virtual int OpenDirectory(const char* path, unsigned long& handle);
  /// `name` is valid until the next call on the same handle, and null at the end.
  virtual int ReadDirectory(unsigned long handle, const char*& name);
  virtual int CloseDirectory(unsigned long handle);

  // The rest are no calls of the system.

  /// What AFile::Write does with the file `path`: replaces it as a whole, in the steps of
  /// AFileReplacement, each a call of this object. A derived class may put the flushes off until
  /// MakeSafe. 0 or an errno.
  virtual int ReplaceFile(const char* path, const std::string& bytes);
  /// Returns when a power cut leaves whatever was changed through this object until now, by any
  /// thread. The message queues call it around each request: nobody hears of a change before it is
  /// safe. A change that fails only here is reported as the derived class sees fit. Does nothing
  /// here, where each change is safe when its call returns. Never throws.
  virtual void MakeSafe();

  /// The number that the tail of a new file's name is made from: unpredictable, and another one at
  /// each call. It comes from here so that a simulation can give its files the same names each
  /// time.
  virtual std::uint64_t UniqueNumber();
};

}  // namespace BaseSDK
