#pragma once

#include <filesystem>

namespace NoxHandlerTest {

/// As long as it lives, the disk is full for what this process writes below a directory: no file
/// can be made there and none grows, while what a file has can be written over. Counts for all
/// threads; processes that are started have room.
class FullDisk {
 public:
  explicit FullDisk(const std::filesystem::path& directory);
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk();
};

}  // namespace NoxHandlerTest
