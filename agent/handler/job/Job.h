#pragma once

#include "agent/handler/job/JobError.h"
#include "agent/handler/job/Overlap.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace NoxHandler {

/// What to run for a task: the content of its job file. docs/command-handler.md describes the
/// keys. Texts for the system are bytes (UTF-8).
struct Job {
  static constexpr std::size_t MaxFileBytes = 64 * 1024;

  std::string m_Command;  ///< an absolute path, or a name to be found in PATH
  std::vector<std::string> m_Arguments;
  std::string m_User;       ///< empty: the agent's own
  std::string m_Directory;  ///< absolute; empty: the user's home
  std::map<std::string, std::string> m_Environment;
  long m_TimeoutSeconds = 0;  ///< 0: none
  OverlapRule m_Overlap = OverlapRule::Skip;
  BaseSDK::AString m_FileName;
  std::map<std::string, unsigned> m_Lines;  ///< where in the file the keys stand, from 1

  /// Throws JobError that names file, line and key for whatever is wrong with the text.
  static Job Parse(const BaseSDK::AString& fileName, const BaseSDK::AString& text);

  /// The same without an exception: adds all that is wrong, in the file's order. A line that is no
  /// line of such a file is told alone.
  static Job Parse(const BaseSDK::AString& fileName, const BaseSDK::AString& text,
                   std::vector<BaseSDK::AString>& problems);

  /// Parse of a file. One that a stranger may have written is refused too, or whose directory a
  /// stranger may write to: it would hand him the agent's rights. Strangers are all but root and
  /// the agent's user, to whom file and directory have to belong; for an agent that runs as root,
  /// the group may not write either.
  static Job Load(const BaseSDK::AString& fileName);

  /// "FILE:LINE: key: reason", for what is wrong with a value as things stand on the machine.
  JobError ErrorAt(const char* key, const BaseSDK::AString& reason) const;
};

}  // namespace NoxHandler
