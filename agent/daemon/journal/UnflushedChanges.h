#pragma once

#include "agent/daemon/journal/FailedChanges.h"

#include <BaseSDK/AFileSystem.h>

#include <map>
#include <string>
#include <thread>

namespace NoxAgent {

/// The changes to the task directory that no journal holds: files that were made, renamed or
/// deleted. Flushes them together. Not for use by several threads at once.
class UnflushedChanges {
 public:
  /// Which thread made the change last.
  using Thread = std::thread::id;

  /// The name `path` was made or deleted, or another file has it now.
  void AddName(const std::string& path, Thread thread);
  /// Bytes were written to the file `path`.
  void AddContent(const std::string& path, Thread thread);
  /// The file `from` is called `to` now.
  void AddRename(const std::string& from, const std::string& to, Thread thread);
  /// The file `path` was deleted.
  void AddRemoval(const std::string& path, Thread thread);

  /// Something was changed, and there is no memory to note what.
  void AddUnnamed() { m_HasUnnamed = true; }

  bool IsEmpty() const { return m_Changes.empty() && !m_HasUnnamed; }
  /// Whether a change of the file `path` may be among them.
  bool MayHave(const std::string& path) const { return m_HasUnnamed || m_Changes.contains(path); }

  /// Takes over changes that were made before these ones; `earlier` is empty afterwards.
  void AddEarlier(UnflushedChanges& earlier) noexcept;

  /// Flushes all of it and forgets what is on the disk then. What is not stays for the next time,
  /// and is noted in `failed` the first time. Returns how many flushes it took.
  unsigned Flush(BaseSDK::AFileSystem& files, const std::string& directory, FailedChanges& failed);

 private:
  struct Change {
    Thread m_Thread;  ///< no thread's once it was told of a failure
    bool m_HasContent = false;
  };

  static void TellOnce(Change& change, const std::string& path, int error, FailedChanges& failed);
  unsigned FlushOneByOne(BaseSDK::AFileSystem& files, const std::string& directory,
                         FailedChanges& failed);

  std::map<std::string, Change> m_Changes;  ///< by path
  bool m_HasUnnamed = false;
};

}  // namespace NoxAgent
