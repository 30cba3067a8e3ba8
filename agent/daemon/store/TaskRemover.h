#pragma once

#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/ReadingTimes.h"
#include "agent/daemon/store/TaskDirectory.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// Removes the files of tasks that the scheduler ends of its own accord, and says in the log why
/// before the file goes. A file that somebody has changed since the scheduler read it stays,
/// because it is another task by now.
///
/// [any thread]
class TaskRemover {
 public:
  /// All arguments are borrowed and outlive this object.
  TaskRemover(BaseSDK::AFileSystem& files, const TaskDirectory& directory, KnownFiles& known,
              const ReadingTimes& readings)
      : m_Files(files), m_Directory(directory), m_Known(known), m_Readings(readings) {}

  /// Removes the task file `name` at `path`. 0 or an errno; ESTALE when it has been changed and
  /// stays. Failures are logged.
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
