#pragma once

#include <BaseSDK/AString.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace BaseSDK {

using FileNames = std::set<std::string>;

/// An empty directory for one test, gone with everything in it afterwards.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::string name = testing::TempDir() + "/nox-base-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
      throw std::filesystem::filesystem_error("mkdtemp",
                                              std::error_code(errno, std::generic_category()));
    }
    m_Path = name;
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() {
    std::error_code ignored;
    (void)std::filesystem::remove_all(m_Path, ignored);
  }

  const std::filesystem::path& Path() const { return m_Path; }
  AString Name(const std::string& file) const {
    return AString::FromUtf8((m_Path / file).string());
  }
  void Put(const std::string& file, const std::string& bytes) const {
    std::ofstream(m_Path / file, std::ios::binary) << bytes;
  }
  std::string Get(const std::string& file) const {
    std::ifstream stream(m_Path / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }
  FileNames Files() const {
    FileNames names;
    for (const auto& entry : std::filesystem::directory_iterator(m_Path)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

 private:
  std::filesystem::path m_Path;
};

}  // namespace BaseSDK
