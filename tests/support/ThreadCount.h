#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace TestSupport {

/// How many threads the process has, without those that are ending. A join returns a moment before
/// the system takes the thread off its list, so the length of the list is sometimes one too many.
inline std::size_t CountThreads() {
  constexpr unsigned long Exiting = 0x4;  // PF_EXITING, set before the one that joins is woken
  std::size_t count = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(thread.path() / "stat");
    std::string stat;
    if (!std::getline(file, stat)) {
      continue;  // gone meanwhile
    }
    std::istringstream fields(stat.substr(stat.rfind(')') + 1));
    std::string other;
    for (int field = 0; field < 6; ++field) {
      fields >> other;
    }
    unsigned long flags = 0;
    if (fields >> flags && (flags & Exiting) == 0) {
      ++count;
    }
  }
  return count;
}

}  // namespace TestSupport
