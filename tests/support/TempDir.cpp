#include "tests/support/TempDir.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace TestSupport {

namespace {

/// In memory where the system offers that: stored tasks are flushed to the disk at every change,
/// which takes hundredths of a second each on a real one.
std::filesystem::path Parent() {
  constexpr const char* InMemory = "/dev/shm";
  return access(InMemory, W_OK | X_OK) == 0 ? std::filesystem::path(InMemory)
                                            : std::filesystem::temp_directory_path();
}

}  // namespace

TempDir::TempDir() {
  std::string name = (Parent() / "nox-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  m_Path = name;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::permissions(m_Path, std::filesystem::perms::owner_all, ignored);
  std::filesystem::remove_all(m_Path, ignored);
}

std::string TempDir::Read(const std::string& name) const {
  std::ifstream file(m_Path / name, std::ios::binary);
  if (!file) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

void TempDir::Write(const std::string& name, const std::string& content) const {
  std::ofstream file(m_Path / name, std::ios::binary | std::ios::trunc);
  if (!(file << content).flush()) {
    throw std::system_error(errno, std::generic_category(), name);
  }
}

bool TempDir::Has(const std::string& name) const {
  return std::filesystem::exists(m_Path / name);
}

std::vector<std::string> TempDir::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(m_Path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace TestSupport
