#pragma once

#include <BaseSDK/AString.h>

#include <optional>
#include <string>

namespace NoxHandler {

/// Reads a file that decides what a job does. A job runs with the agent's rights, so nobody else
/// may have a say in it.
struct TrustedFile {
  /// A larger file is refused.
  static constexpr std::size_t MaxBytes = 64 * 1024;

  /// The whole file; `what` is what errors call it, such as "job file". Throws JobError when it
  /// cannot be read, is larger than MaxBytes or no regular file, and when a stranger may have
  /// written it or may write to its directory. Both must belong to root or to the agent's user, and
  /// nobody else may write to them; for an agent that runs as root, their group may not write
  /// either.
  static std::string Read(const char* what, const BaseSDK::AString& fileName);
  /// The same, but nothing when there is no such file.
  static std::optional<std::string> Find(const char* what, const BaseSDK::AString& fileName);
  /// Throws JobError when a stranger may write to the directory of such files. One that is not
  /// there passes.
  static void CheckDirectory(const char* what, const BaseSDK::AString& directory);
};

}  // namespace NoxHandler
