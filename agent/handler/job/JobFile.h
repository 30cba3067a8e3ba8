#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <optional>
#include <string>

namespace NoxHandler {

/// A job's file as bytes. Whoever can write a job, or replace it, has the rights that the job runs
/// with. So file and directory must belong to root or to the agent's user, and nobody else may
/// write to them; for an agent that runs as root, their group may not write either. [any thread]
struct JobFile {
  static constexpr std::size_t MaxBytes = 64 * 1024;

  /// What the file holds; nothing when there is none. Throws JobError when it cannot be read, is
  /// too large or no regular file, or when a stranger may have written it.
  static std::optional<std::string> Read(const BaseSDK::AString& fileName);
  /// Throws JobError when a stranger may write to the directory of the job files. One that is not
  /// there passes.
  static void CheckDirectory(const BaseSDK::AString& directory);
};

}  // namespace NoxHandler
