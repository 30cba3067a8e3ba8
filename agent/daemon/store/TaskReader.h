#pragma once

#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/OpenTaskFiles.h"
#include "agent/daemon/store/ReadingTimes.h"
#include "agent/daemon/store/RefusedFolder.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// Opens task files for reading, and keeps from the scheduler each file that it could make no task
/// of, because it would delete the file.
///
/// [any thread]
class TaskReader {
 public:
  /// What it works with. All of them are borrowed and outlive the reader.
  struct Parts {
    BaseSDK::AFileSystem& m_Files;
    RefusedFolder& m_Refused;
    KnownFiles& m_Known;
    OpenTaskFiles& m_Open;
    const ReadingTimes& m_Readings;
  };

  explicit TaskReader(const Parts& parts) : m_Parts(parts) {}

  /// 0 and a descriptor, whose bytes are to be read through m_Open when they were judged; or an
  /// errno. A file that is refused is moved to the refused documents, or left where it cannot be
  /// moved; either way the answer is ENOENT, as for a file that is not there.
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
