#pragma once

#include "agent/daemon/store/FileIdentity.h"
#include "agent/daemon/store/Refusal.h"

#include <BaseSDK/AMutex.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What the agent knows of the task files, by their names: in which condition each one was read or
/// written last, and what it was judged then. So a file that has not changed is not judged again.
///
/// [any thread]
class KnownFiles {
 public:
  /// The scheduler has got this file to read. One that is not `settled` is judged again next time.
  void Accept(const std::string& name, const FileIdentity& identity, bool settled)
      NOX_EXCLUDES(m_Lock);
  /// It cannot be read, and stays where it is. True when that is news.
  bool Refuse(const std::string& name, const FileIdentity& identity, const Refusal& refusal)
      NOX_EXCLUDES(m_Lock);
  /// The scheduler has written this file; it is judged when it is read.
  void Write(const std::string& name, const FileIdentity& identity) NOX_EXCLUDES(m_Lock);
  void Forget(const std::string& name) NOX_EXCLUDES(m_Lock);

  /// Whether the file was accepted as it is, settled.
  bool IsAccepted(const std::string& name, const FileIdentity& identity) NOX_EXCLUDES(m_Lock);
  /// Whether the scheduler has read or written the file as it is: no one else has put it there.
  bool IsCurrent(const std::string& name, const FileIdentity& identity) const NOX_EXCLUDES(m_Lock);
  /// Why a file that stays where it is was refused; nothing when it was not.
  std::optional<Refusal> RefusalOf(const std::string& name) const NOX_EXCLUDES(m_Lock);

  /// A reading of the whole directory: what is asked for by nobody in it is gone, and is forgotten
  /// at its end.
  void BeginReading() NOX_EXCLUDES(m_Lock);
  void EndReading() NOX_EXCLUDES(m_Lock);

 private:
  struct Entry {
    FileIdentity m_Identity;
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
