#pragma once

#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/OpenTaskFiles.h"
#include "agent/daemon/store/TaskDirectory.h"

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AString.h>

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What lies in the task directory and is no task: other files, directories, and documents that no
/// task can be made of but that could not be moved away.
///
/// [any thread]
class StrayFiles {
 public:
  struct Stray {
    std::string m_Name;
    BaseSDK::AString m_Reason;
  };

  /// All are borrowed.
  StrayFiles(BaseSDK::AFileSystem& files, const TaskDirectory& directory, const KnownFiles& known,
             const OpenTaskFiles& open)
      : m_Files(files), m_Directory(directory), m_Known(known), m_Open(open) {}

  /// By name. Hidden files are not among them: the scheduler writes to such.
  std::vector<Stray> List() const;
  /// Why what is called `name` is no task; nothing when it is one, or when there is nothing.
  std::optional<BaseSDK::AString> WhyStray(const std::string& name) const;
  /// 0 or an errno. REQUIRES: it is a stray.
  int Remove(const std::string& name);

 private:
  std::string PathOf(const std::string& name) const { return m_Directory.Path() + "/" + name; }

  BaseSDK::AFileSystem& m_Files;
  const TaskDirectory& m_Directory;
  const KnownFiles& m_Known;
  const OpenTaskFiles& m_Open;
};

}  // namespace NoxAgent
