#pragma once

#include "agent/daemon/journal/Journal.h"
#include "agent/daemon/journal/WaitingFiles.h"

#include <BaseSDK/AMutex.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace NoxAgent {

/// The journal of one task directory, from the replay at the start to its emptying at the end. It
/// reports in the log what it finds. [any thread]
class TaskJournal {
 public:
  /// `files` is borrowed and outlives this object.
  TaskJournal(BaseSDK::AFileSystem& files, std::string directory, std::string path);

  /// The first time it brings the task files up to date with what the journal holds; then it
  /// readies the journal. When that fails, the journal stays as it is and cannot be used; a later
  /// attempt may succeed. Does nothing when the journal is ready. REQUIRES: every file that Append
  /// was told of has the content that it was told, or a newer one.
  void Begin() NOX_EXCLUDES(m_Lock);
  /// Whether Append may be used. After an error it may not.
  bool IsReady() const NOX_EXCLUDES(m_Lock);

  /// How many bytes Append takes for the file: its record, and for one that is not prepared yet the
  /// version that is to follow.
  static std::size_t SizeOf(const WaitingFile& file);
  /// Whether Append has room for so many bytes now.
  bool HasRoomFor(std::size_t bytes) const NOX_EXCLUDES(m_Lock);
  /// Appends the records of the files and flushes them. 0 or an errno, which is logged.
  int Append(const std::list<WaitingFile>& files) NOX_EXCLUDES(m_Lock);
  /// Appends which version took the place of each of these files that was not prepared when Append
  /// was told of it, and flushes that. REQUIRES: there is one. 0 or an errno; one that is not known
  /// yet is logged.
  int AppendVersions(const std::list<WaitingFile>& files) NOX_EXCLUDES(m_Lock);
  /// Flushes the disk and empties the journal. REQUIRES: as for Begin. 0 or an errno, which is
  /// logged.
  int Empty() NOX_EXCLUDES(m_Lock);

  /// How often it was emptied so far.
  std::uint64_t Emptied() const NOX_EXCLUDES(m_Lock);

  std::size_t UsedBytes() const NOX_EXCLUDES(m_Lock);
  std::uint64_t Flushes() const NOX_EXCLUDES(m_Lock);

 private:
  int ReplayOnce() NOX_REQUIRES(m_Lock);
  int Replay(const std::vector<JournalRecord>& records) NOX_REQUIRES(m_Lock);
  int FlushDisk() NOX_REQUIRES(m_Lock);
  /// Empties the journal, once the disk has what it tells of.
  int Clear() NOX_REQUIRES(m_Lock);
  int Report(const char* problem, int error) noexcept NOX_REQUIRES(m_Lock);

  BaseSDK::AFileSystem& m_Files;
  const std::string m_Directory;
  const std::string m_Path;

  mutable BaseSDK::AMutex m_Lock;
  Journal m_Journal NOX_GUARDED_BY(m_Lock);
  bool m_Replayed NOX_GUARDED_BY(m_Lock) = false;
  bool m_HasRecords NOX_GUARDED_BY(m_Lock) = false;  ///< the journal may have some
  std::size_t m_Kept NOX_GUARDED_BY(m_Lock) = 0;     ///< bytes, for versions that are to follow
  std::uint64_t m_Emptied NOX_GUARDED_BY(m_Lock) = 0;
  std::uint64_t m_DiskFlushes NOX_GUARDED_BY(m_Lock) = 0;
  int m_Reported NOX_GUARDED_BY(m_Lock) = 0;  ///< the error that was logged last
};

}  // namespace NoxAgent
