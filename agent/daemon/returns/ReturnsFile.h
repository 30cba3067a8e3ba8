#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace NoxAgent {

/// The file that tells when disabled tasks come back (docs/files.md): a line for each of them, with
/// the moment in seconds since the epoch, a blank and the task's ID. One thread at a time.
class ReturnsFile {
 public:
  /// By task ID: seconds since the epoch.
  using Moments = std::map<std::string, long>;

  /// More of them are neither read nor to be written.
  static constexpr std::size_t MaxEntries = 10000;

  explicit ReturnsFile(std::string path) : m_Path(std::move(path)) {}

  /// What the file holds; nothing when there is none. One that is damaged, or cannot be read, is
  /// renamed to PATH.damaged, which is logged, and what can be read of it counts. What a crash has
  /// left beside the file is removed.
  Moments Read() const;
  /// Replaces the file, also safe from a power cut. 0 or an errno; the old file stands then.
  int Write(const Moments& moments) const;

 private:
  void PutAside() const;
  void KeepReadable(const Moments& moments) const;

  std::string m_Path;
};

}  // namespace NoxAgent
