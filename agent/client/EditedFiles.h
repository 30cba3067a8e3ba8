#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace NoxAgent {

/// Texts in files of a directory of their own, which only this user may read, while an editor works
/// on them. They are gone with the object unless they are kept.
class EditedFiles {
 public:
  struct File {
    std::string m_Name;
    std::string m_Text;
  };

  /// Throws CommandError (Failed) when they cannot be written.
  explicit EditedFiles(const std::vector<File>& files);
  EditedFiles(const EditedFiles&) = delete;
  EditedFiles& operator=(const EditedFiles&) = delete;
  ~EditedFiles();

  /// Has them edited with $VISUAL, $EDITOR or vi, and waits. CommandError (Failed) when the editor
  /// cannot be run or reports an error.
  void Edit() const;
  /// The text as it is now, in the order of the files.
  std::string Text(std::size_t file) const;
  /// Leaves the files where they are and returns the directory.
  const std::filesystem::path& Keep();

 private:
  std::filesystem::path PathOf(std::size_t file) const { return m_Directory / m_Names[file]; }

  std::filesystem::path m_Directory;
  std::vector<std::string> m_Names;
  bool m_IsKept = false;
};

}  // namespace NoxAgent
