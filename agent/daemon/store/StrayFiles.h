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

/// Finds what lies in the task directory and is no task: other files, directories, and refused
/// documents that could not be moved away.
///
/// [any thread]
class StrayFiles {
 public:
  struct Stray {
    std::string m_Name;
    BaseSDK::AString m_Reason;
  };

  /// All arguments are borrowed and outlive this object.
  StrayFiles(BaseSDK::AFileSystem& files, const TaskDirectory& directory, const KnownFiles& known,
             const OpenTaskFiles& open)
      : m_Files(files), m_Directory(directory), m_Known(known), m_Open(open) {}

  /// All strays, by name. Hidden files do not count: the scheduler writes to such files itself.
  std::vector<Stray> List() const;
  /// Why the entry `name` is no task; nothing when it is one, is hidden, is being made, or is not
  /// there.
  std::optional<BaseSDK::AString> WhyStray(const std::string& name) const;
  /// Removes the entry, which is no directory. 0 or an errno. REQUIRES: WhyStray gave a reason.
  int Remove(const std::string& name);

 private:
  std::string PathOf(const std::string& name) const { return m_Directory.Path() + "/" + name; }

  BaseSDK::AFileSystem& m_Files;
  const TaskDirectory& m_Directory;
  const KnownFiles& m_Known;
  const OpenTaskFiles& m_Open;
};

}  // namespace NoxAgent
