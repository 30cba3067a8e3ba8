#pragma once

#include "tests/support/ForwardingFileSystem.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

/// A file system whose calls fail when told to, and that can stop doing anything at all, as after
/// the death of the process. Calls are counted from 1 on, in the order in which they are made. It
/// does not put itself in force (AFileSystem::Replace). May be used from any thread.
class FailingFileSystem : public ForwardingFileSystem {
 public:
  enum Kind {
    OpenCall,
    ReadCall,
    WriteCall,
    SyncCall,
    CloseCall,
    SetModeCall,
    GetInfoCall,
    RenameCall,
    UnlinkCall,
    OpenDirectoryCall,
    ReadDirectoryCall,
    CloseDirectoryCall,
  };

  using ForwardingFileSystem::ForwardingFileSystem;

  /// Call number `number`, counted from the last Reset, does nothing and answers `error`. A call
  /// that closes still closes, as the system does.
  void FailAt(unsigned number, int error);
  /// Every call of the kind, until Reset.
  void FailAll(Kind kind, int error);
  /// The process dies in call `number`: that call and all later ones leave the disk as it is and
  /// answer EIO. A write that dies has got its first `partialBytes` to the disk.
  void KillAt(unsigned number, std::size_t partialBytes = 0);
  /// Write number `number` (of all calls) takes only this many bytes, without an error.
  void ShortenAt(unsigned number, std::size_t bytes);
  /// Forgets all of the above and counts from 1 again; back to life.
  void Reset();

  unsigned Count() const;
  unsigned Count(Kind kind) const;
  /// Whether the moment of death has come.
  bool IsDead() const;
  /// The last calls, at most HistorySize of them, in words: "rename .T1.abc -> T1.vsk".
  static constexpr std::size_t HistorySize = 1000;
  std::vector<std::string> History() const;

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  // All three are counted as SyncCall.
  int Sync(int fd) override;
  int SyncData(int fd) override;
  int SyncAll(int fd) override;
  int Close(int fd) override;
  int SetMode(int fd, unsigned mode) override;
  int GetInfo(const char* path, Info& info) override;
  int Rename(const char* from, const char* to, bool replace) override;
  int Unlink(const char* path) override;
  int OpenDirectory(const char* path, unsigned long& handle) override;
  int ReadDirectory(unsigned long handle, const char*& name) override;
  int CloseDirectory(unsigned long handle) override;

 private:
  struct Plan {
    std::map<unsigned, int> m_FailAt;
    std::map<Kind, int> m_FailAll;
    std::map<unsigned, std::size_t> m_ShortenAt;
    std::optional<unsigned> m_KillAt;
    std::size_t m_PartialBytes = 0;
  };

  /// Counts a call. Returns the error that it is to answer; 0 when it is to be carried out. `most`
  /// is how many bytes a write may take, also one that fails.
  int Admit(Kind kind, const std::string& words, std::size_t* most = nullptr);

  mutable BaseSDK::AMutex m_Lock;
  Plan m_Plan NOX_GUARDED_BY(m_Lock);
  std::map<Kind, unsigned> m_Counts NOX_GUARDED_BY(m_Lock);
  unsigned m_Count NOX_GUARDED_BY(m_Lock) = 0;
  std::deque<std::string> m_History NOX_GUARDED_BY(m_Lock);
};

}  // namespace TestSupport
