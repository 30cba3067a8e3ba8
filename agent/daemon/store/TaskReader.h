#pragma once

#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/OpenTaskFiles.h"
#include "agent/daemon/store/ReadingTimes.h"
#include "agent/daemon/store/RefusedFolder.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// Opens task files to be read, and sees to it that the scheduler gets none that it can make no
/// task of: it would delete that.
///
/// [any thread]
class TaskReader {
 public:
  /// All of them are borrowed.
  struct Parts {
    BaseSDK::AFileSystem& m_Files;
    RefusedFolder& m_Refused;
    KnownFiles& m_Known;
    OpenTaskFiles& m_Open;
    const ReadingTimes& m_Readings;
  };

  explicit TaskReader(const Parts& parts) : m_Parts(parts) {}

  /// 0 and a descriptor, whose bytes m_Open may have, or an errno. What is refused is put away and
  /// is ENOENT.
  int Open(const std::string& name, const std::string& path, int flags, int& fd);

 private:
  struct Look;

  int TryToOpen(const std::string& name, const std::string& path, int flags, int& fd);
  int LookAt(const std::string& name, int fd, Look& look);
  int Judge(const std::string& name, int fd, Look& look);
  int PutAway(const std::string& name, const std::string& path, const Look& look);
  void LeaveInPlace(const std::string& name, const Look& look, const BaseSDK::AString& why);
  void ReportUnreadable(const std::string& name, const std::string& path, int error);

  const Parts m_Parts;
};

}  // namespace NoxAgent
