#include "tests/proof/SystemZones.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace {

std::string Content(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace

std::vector<std::string> SystemZones() {
  const fs::path root = "/usr/share/zoneinfo";
  std::map<std::string, std::string> byContent;
  for (fs::recursive_directory_iterator at(root), end; at != end; ++at) {
    const std::string name = fs::relative(at->path(), root).string();
    if (name == "posix" || name == "right") {
      at.disable_recursion_pending();
    }
    if (!at->is_regular_file() || name == "localtime" || name == "posixrules") {
      continue;
    }
    const std::string content = Content(at->path());
    if (content.rfind("TZif", 0) == 0) {
      byContent.emplace(content, name);
    }
  }
  std::vector<std::string> zones;
  for (const auto& [content, name] : byContent) {
    zones.push_back(name);
  }
  return zones;
}
