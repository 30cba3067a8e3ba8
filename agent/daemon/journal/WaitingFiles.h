#pragma once

#include "agent/daemon/journal/JournalRecord.h"

#include <BaseSDK/AFileReplacement.h>
#include <BaseSDK/AMutex.h>

#include <condition_variable>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <thread>

namespace NoxAgent {

/// A task file that is to take the place of another one.
struct WaitingFile {
  WaitingFile(BaseSDK::AFileSystem& files, const std::string& path)
      : m_Replacement(files, path), m_Thread(std::this_thread::get_id()) {}

  BaseSDK::AFileReplacement m_Replacement;
  JournalRecord m_Record;
  /// The journal has not been told which version is to take the place: it is made only now.
  bool m_IsLate = false;
  std::uint64_t m_Looked = 0;  ///< in which epoch of the journal m_Record.m_Before was looked at
  const std::thread::id m_Thread;  ///< which asked for it
};

/// The files that wait for their place, in the order in which they were written: first until the
/// journal has them, and then until somebody puts them there. [any thread]
class WaitingFiles {
 public:
  using Files = std::list<WaitingFile>;

  /// Whether a file waits to be the file `name`.
  bool Has(const std::string& name) const NOX_EXCLUDES(m_Lock);
  /// How many wait.
  std::size_t Count() const NOX_EXCLUDES(m_Lock);
  /// Adds the files, which are not safe yet, at the end; `files` is empty afterwards.
  void Add(Files& files) NOX_EXCLUDES(m_Lock);

  /// From now on NoteOther tells of what this flush may miss.
  void BeginFlush() NOX_EXCLUDES(m_Lock);
  /// All that are not safe yet. They still count as waiting.
  Files TakeUnsafe() NOX_EXCLUDES(m_Lock);
  /// These, which TakeUnsafe gave, are safe now; `files` is empty afterwards.
  void AddSafe(Files& files) NOX_EXCLUDES(m_Lock);
  /// All that are safe. They still count as waiting, and as safe.
  Files TakeSafe() NOX_EXCLUDES(m_Lock);
  /// These wait no more.
  void Remove(const Files& files) noexcept NOX_EXCLUDES(m_Lock);
  /// The same for files that TakeSafe gave.
  void RemoveSafe(const Files& files) noexcept NOX_EXCLUDES(m_Lock);
  /// How many are safe and wait.
  std::size_t CountSafe() const NOX_EXCLUDES(m_Lock);

  // For the thread that makes changes safe which nobody waits for.

  /// There is something else to be made safe.
  void NoteOther() NOX_EXCLUDES(m_Lock);
  /// Returns when there is a safe file, or when something has not been safe for a moment. False
  /// once StopAwaiting was called.
  bool Await() NOX_EXCLUDES(m_Lock);
  void StopAwaiting() NOX_EXCLUDES(m_Lock);

 private:
  bool IsOneReady() const NOX_REQUIRES(m_Lock) { return m_Stopped || !m_Safe.empty(); }
  bool HasUnsafe() const NOX_REQUIRES(m_Lock) { return !m_Unsafe.empty() || m_HasOther; }
  void Forget(const Files& files) noexcept NOX_REQUIRES(m_Lock);

  mutable BaseSDK::AMutex m_Lock;
  std::condition_variable_any m_Changed;
  std::map<std::string, unsigned> m_Waiting NOX_GUARDED_BY(m_Lock);  ///< how many, by name
  Files m_Unsafe NOX_GUARDED_BY(m_Lock);
  Files m_Safe NOX_GUARDED_BY(m_Lock);
  std::size_t m_Taken NOX_GUARDED_BY(m_Lock) = 0;  ///< by TakeSafe, and wait still
  std::size_t m_Count NOX_GUARDED_BY(m_Lock) = 0;  ///< of all that wait
  bool m_HasOther NOX_GUARDED_BY(m_Lock) = false;
  bool m_Stopped NOX_GUARDED_BY(m_Lock) = false;
};

}  // namespace NoxAgent
