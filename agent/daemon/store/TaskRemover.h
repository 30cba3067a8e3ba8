#pragma once

#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/ReadingTimes.h"
#include "agent/daemon/store/TaskDirectory.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// Removes the files of tasks that the scheduler has ended on its own account, and tells why before
/// the file goes. One that somebody has changed since the scheduler read it stays: it is another
/// task by now.
///
/// [any thread]
class TaskRemover {
 public:
  /// All are borrowed.
  TaskRemover(BaseSDK::AFileSystem& files, const TaskDirectory& directory, KnownFiles& known,
              const ReadingTimes& readings)
      : m_Files(files), m_Directory(directory), m_Known(known), m_Readings(readings) {}

  /// 0 or an errno.
  int Remove(const std::string& name, const std::string& path);

 private:
  int RemoveCurrent(const std::string& name, const std::string& path);
  int RemoveUnchanged(const std::string& name, const std::string& path,
                      const FileIdentity& identity);
  BaseSDK::AString TaskOf(const std::string& name) const;

  BaseSDK::AFileSystem& m_Files;
  const TaskDirectory& m_Directory;
  KnownFiles& m_Known;
  const ReadingTimes& m_Readings;
};

}  // namespace NoxAgent
