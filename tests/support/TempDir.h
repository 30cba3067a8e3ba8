#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace TestSupport {

/// A fresh directory of its own, removed with all it holds when this ends.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();

  const std::filesystem::path& Path() const { return m_Path; }
  std::filesystem::path operator/(const std::string& name) const { return m_Path / name; }

  /// Bytes as they are. Both fail the process by an exception when the system refuses.
  std::string Read(const std::string& name) const;
  void Write(const std::string& name, const std::string& content) const;
  bool Has(const std::string& name) const;
  /// The names in the directory, sorted, hidden ones too.
  std::vector<std::string> Names() const;

 private:
  std::filesystem::path m_Path;
};

}  // namespace TestSupport
