// Gives the files of directories to a fuzz target, one after the other: what the engine has found
// stays found, in every build.
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using std::filesystem::path;

std::vector<path> FilesIn(const path& directory) {
  std::vector<path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string Content(const path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t Replay(const path& directory) {
  const std::vector<path> files = FilesIn(directory);
  for (const path& file : files) {
    (void)std::printf("%s\n", file.c_str());
    (void)std::fflush(stdout);  // the last name printed is the one that failed
    const std::string content = Content(file);
    (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()),
                                 content.size());
  }
  return files.size();
}

}  // namespace

int main(int argc, char** argv) {
  (void)LLVMFuzzerInitialize(&argc, &argv);
  std::size_t replayed = 0;
  for (int i = 1; i < argc; ++i) {
    replayed += Replay(argv[i]);
  }
  (void)std::printf("%zu files\n", replayed);
  return replayed > 0 ? 0 : 1;
}
