// What holds for every path that stands on a command line.
#pragma once

#include <string>

namespace NoxAgent {

/// Why `path` is refused, or an empty text; for CommandLine's Check. An empty path comes from a
/// variable that is not set, and would stand for a default elsewhere.
inline std::string CheckPath(const std::string& path) {
  return path.empty() ? "the path is empty" : std::string();
}

}  // namespace NoxAgent
