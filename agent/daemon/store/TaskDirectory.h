#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NoxAgent {

/// The directory of the task files. Tells which of the paths that the scheduler uses lie in it, and
/// which names are those of tasks. Constant, so any thread may ask.
class TaskDirectory {
 public:
  /// `path` is the one that the scheduler is given; slashes at its end make no difference.
  /// `extension` is what task files end in, dot included.
  TaskDirectory(std::string path, std::string extension);

  const std::string& Path() const { return m_Path; }
  const std::string& Extension() const { return m_Extension; }

  /// Whether the path is that of the directory; slashes at its end make no difference.
  bool IsItself(std::string_view path) const;
  /// The name of an entry right in the directory, from its path; nothing for any other path.
  std::optional<std::string> NameOf(std::string_view path) const;
  /// Whether a task is read from a file of this name.
  bool IsTaskFile(std::string_view name) const;
  /// The task ID that the scheduler reads from this file name: all in front of the first extension.
  std::string TaskIdOf(std::string_view name) const;
  /// The path of the file that a task of this ID has.
  std::string FileOf(const std::string& taskId) const {
    return m_Path + "/" + taskId + m_Extension;
  }

 private:
  std::string m_Path;  ///< without slashes at its end
  std::string m_Extension;
};

}  // namespace NoxAgent
