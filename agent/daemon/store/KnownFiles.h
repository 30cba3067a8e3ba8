#pragma once

#include "agent/daemon/store/FileIdentity.h"
#include "agent/daemon/store/Refusal.h"

#include <BaseSDK/AMutex.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What the agent knows of the task files, by their names: in which condition it saw each one last,
/// when it was read or written, and how it was judged then. A file that has not changed since need
/// not be judged again.
///
/// [any thread]
class KnownFiles {
 public:
  /// For whom a file is read: the scheduler then has it in memory, and a client has not.
  enum class Reader { Scheduler, Client };

  /// The file was handed out for reading. With `settled` false it is judged again next time: it was
  /// changed so recently that another change might not show.
  void Accept(const std::string& name, const FileIdentity& identity, bool settled, Reader reader)
      NOX_EXCLUDES(m_Lock);
  /// The file cannot be read as a task and stays where it is. True when this is news: an unknown
  /// file, or another condition or reason than last time.
  bool Refuse(const std::string& name, const FileIdentity& identity, const Refusal& refusal)
      NOX_EXCLUDES(m_Lock);
  /// The scheduler has written the file. It is judged when it is read.
  void Write(const std::string& name, const FileIdentity& identity) NOX_EXCLUDES(m_Lock);
  void Forget(const std::string& name) NOX_EXCLUDES(m_Lock);

  /// Whether the file was accepted in this very condition and as settled. It is then handed out,
  /// and the reading under way counts it as still there.
  bool IsAccepted(const std::string& name, const FileIdentity& identity, Reader reader)
      NOX_EXCLUDES(m_Lock);
  /// Whether the scheduler has read or written the file in this condition: nobody else has changed
  /// it since.
  bool IsCurrent(const std::string& name, const FileIdentity& identity) const NOX_EXCLUDES(m_Lock);
  /// Why a file that stays where it is was refused; nothing when it was not.
  std::optional<Refusal> RefusalOf(const std::string& name) const NOX_EXCLUDES(m_Lock);

  // These two enclose a reading of the whole directory. A file that nobody asks for in between is
  // gone, and is forgotten at the end.
  void BeginReading() NOX_EXCLUDES(m_Lock);
  void EndReading() NOX_EXCLUDES(m_Lock);

 private:
  struct Entry {
    FileIdentity m_Identity;
    FileIdentity m_InMemory;  ///< of what the scheduler has; no file's when it has none
    bool m_Accepted = false;
    std::optional<Refusal> m_Refusal;
    unsigned long m_Reading = 0;
  };

  Entry& Renew(const std::string& name, const FileIdentity& identity) NOX_REQUIRES(m_Lock);

  mutable BaseSDK::AMutex m_Lock;
  std::map<std::string, Entry> m_Entries NOX_GUARDED_BY(m_Lock);
  unsigned long m_Reading NOX_GUARDED_BY(m_Lock) = 0;
};

}  // namespace NoxAgent
