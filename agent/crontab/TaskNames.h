#pragma once

#include <set>
#include <string>
#include <string_view>

namespace NoxAgent {

/// Names tasks after their commands. Each name is one that a task may have, and no two are equal: a
/// second "backup" is "backup-2".
class TaskNames {
 public:
  /// `taken` are names that other tasks have already.
  explicit TaskNames(std::set<std::string> taken = {}) : m_Taken(std::move(taken)) {}

  /// The name for the next task. `command` is a line for the shell.
  std::string NameFor(std::string_view command);

 private:
  std::set<std::string> m_Taken;
};

}  // namespace NoxAgent
