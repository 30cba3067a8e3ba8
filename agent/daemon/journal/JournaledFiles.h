#pragma once

#include "agent/daemon/journal/FailedChanges.h"
#include "agent/daemon/journal/SharedFlush.h"
#include "agent/daemon/journal/TaskJournal.h"
#include "agent/daemon/journal/UnflushedChanges.h"
#include "agent/daemon/journal/WaitingFiles.h"
#include "agent/daemon/store/ForwardingFileSystem.h"
#include "agent/daemon/store/TaskDirectory.h"

#include <BaseSDK/AMutex.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

namespace NoxAgent {

/// Makes many changes of task files safe with one flush. A file that is replaced waits beside the
/// old one until MakeSafe has appended its content to the journal and flushed that; then it takes
/// the old one's place, without a flush of its own. When many wait, further ones are late, unless
/// somebody awaits their failures: they are made when they are safe, and the journal is told which
/// they are. Files that are made, renamed or deleted change at once, and MakeSafe flushes them.
/// docs/files.md tells what is on the disk at every moment.
///
/// Whoever asks for a file that waits makes it safe and puts it in its place first, so everybody
/// sees what was written last. While the journal cannot be written, each file is flushed by itself.
///
/// [any thread]
class JournaledFiles final : public ForwardingFileSystem {
 public:
  /// Learns what becomes of the files. It must neither call back nor throw.
  class Observer {
   public:
    virtual ~Observer() = default;
    /// The file `path` has been replaced; `info` is the new one.
    virtual void OnReplaced(const std::string& path, const Info& info) noexcept = 0;
    /// A change of `path` that had seemed to succeed has failed, or a power cut may undo it. On the
    /// thread that made it, from within MakeSafe. `error` is an errno.
    virtual void OnFailure(const std::string& path, int error) noexcept = 0;
    /// Whether the calling thread is to learn now, from the call that makes the change, that a file
    /// cannot be written: somebody waits for the answer.
    virtual bool IsFailureAwaited() const noexcept = 0;
  };

  /// `below` is borrowed and outlives this object. `directory` is that of the task files; all other
  /// paths pass through. `journalPath` lies in a directory that is there.
  JournaledFiles(AFileSystem& below, const TaskDirectory& directory,
                 const std::string& journalPath);

  /// `observer` is borrowed; null for none. [while nobody else uses this object]
  void SetObserver(Observer* observer) { m_Observer = observer; }

  /// Brings the files up to date with what an earlier agent has left in the journal. Until then,
  /// and when that fails, each file is flushed by itself; the next listing of the directory tries
  /// again.
  void Begin() NOX_EXCLUDES(m_AppendLock);
  /// Makes all safe, puts every file in its place and empties the journal.
  void End();

  /// Puts the replaced files that are safe in their place. MakeSafe does so too, unless they are
  /// many.
  void Follow() NOX_EXCLUDES(m_FollowLock);
  /// The files that wait; who follows from a thread of his own waits for them there.
  WaitingFiles& Waiting() { return m_Waiting; }

  struct Counts {
    std::uint64_t m_Replaced = 0;    ///< task files since the start
    std::uint64_t m_Flushes = 0;     ///< for all changes of task files since the start
    std::size_t m_JournalBytes = 0;  ///< what the journal holds now
  };
  Counts Count() const;

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  int Sync(int fd) override;
  int Close(int fd) override;
  int GetInfo(const char* path, Info& info) override;
  int Rename(const char* from, const char* to, bool replace) override;
  int Unlink(const char* path) override;
  int OpenDirectory(const char* path, unsigned long& handle) override;
  int ReplaceFile(const char* path, const std::string& bytes) override;
  void MakeSafe() override;

 private:
  using Files = WaitingFiles::Files;

  bool IsIn(const char* path) const { return m_Directory.NameOf(path).has_value(); }
  /// Puts a file that waits for this path in its place.
  void SettleAt(const char* path);
  /// Whether it is the directory or a task file that is open for writing.
  bool IsFlushedLater(int fd) NOX_EXCLUDES(m_Lock);
  /// Has `note` note a change that was made, to be flushed by the next MakeSafe.
  template <class Note>
  void NoteChange(const Note& note) NOX_EXCLUDES(m_Lock);

  int ReplaceAtOnce(const char* path, const std::string& bytes);
  int ReplaceLater(const char* path, JournalRecord record);
  /// Whether the next file is to be made only when it is safe.
  bool IsNextLate() const;
  int Prepare(WaitingFile& file);

  // On the one thread that flushes for all.
  void FlushAll();
  void FlushChanges() NOX_EXCLUDES(m_Lock);
  /// Those whose names may be lost by a power cut.
  Files TakeUnnamed(Files& files) NOX_EXCLUDES(m_Lock);
  void FlushSome(Files& files);
  /// As many as the journal has room for now, off the beginning.
  Files TakeFitting(Files& files);
  void LookAgain(WaitingFile& file);
  /// Another one when the journal may not know what is in the place of a file: it was emptied, or a
  /// file took its place without it.
  std::uint64_t Epoch() const;
  bool AppendToJournal(Files& files) NOX_EXCLUDES(m_AppendLock);
  void FlushEach(Files& files) NOX_EXCLUDES(m_FollowLock);

  // Following.
  void PutInPlace(Files& files) NOX_REQUIRES(m_FollowLock);
  bool TellVersions(Files& files) NOX_REQUIRES(m_FollowLock) NOX_EXCLUDES(m_AppendLock);
  /// Makes those that are late; those that cannot be made are noted as failed and left out.
  void MakeLate(Files& files) NOX_REQUIRES(m_FollowLock);
  int MakeLate(WaitingFile& file);
  int FinishByItself(WaitingFile& file);
  /// The file is in its place, unless `error` tells why not.
  void Finish(const WaitingFile& file, int error) NOX_REQUIRES(m_FollowLock);
  void ReportOwnFailures();

  const TaskDirectory m_Directory;
  Observer* m_Observer = nullptr;

  // Each with a lock of its own.
  TaskJournal m_Journal;
  WaitingFiles m_Waiting;
  FailedChanges m_Failed;
  SharedFlush m_Shared;

  /// Held while files are put in their place, so that this happens in their order. Before every
  /// other lock of this object.
  BaseSDK::AMutex m_FollowLock;
  /// Held while the journal takes records: whatever it has taken is found among the safe files.
  BaseSDK::AMutex m_AppendLock;

  BaseSDK::AMutex m_Lock;
  UnflushedChanges m_Changes NOX_GUARDED_BY(m_Lock);
  std::map<int, std::string> m_Open NOX_GUARDED_BY(m_Lock);  ///< path, empty of the directory

  std::atomic<std::uint64_t> m_Replaced{0};
  std::atomic<std::uint64_t> m_Flushes{0};  ///< without the journal's
  /// How many files took their place without the journal's knowing.
  std::atomic<std::uint64_t> m_ByThemselves{0};
};

}  // namespace NoxAgent
