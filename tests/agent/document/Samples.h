// The sample documents, which the checker and the schema are both held against.
//
// The beginning of a sample's name says what both make of it:
//   good-    no problem, valid
//   schema-  a problem, not valid
//   rule-    a problem that a schema cannot see, valid
//   broken-  not well formed
// samples/problems.txt says what the checker answers, word for word.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace NoxAgentTest {

inline std::string ReadWhole(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

inline std::vector<std::filesystem::path> SamplePaths() {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(NOX_SAMPLES_DIR)) {
    if (entry.path().extension() == ".xml") {
      paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

inline bool NameBegins(const std::filesystem::path& path, const char* beginning) {
  return path.filename().string().rfind(beginning, 0) == 0;
}

}  // namespace NoxAgentTest
