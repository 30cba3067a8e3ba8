#pragma once

#include <stdexcept>
#include <string>

namespace NoxAgent {

/// How noxctl ends. The man page and docs list these numbers: they are a promise to scripts.
enum class ExitCode : int {
  Ok = 0,           ///< for check: no problems
  Failed = 1,       ///< the agent refused or the operation failed; for check: warnings alone
  Usage = 2,        ///< bad arguments, or a document that is refused
  Unreachable = 3,  ///< no agent answers
};

/// Ends a command. What() is one line: what went wrong, and what to do about it.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& message)
      : std::runtime_error(message), m_Code(code) {}

  ExitCode Code() const { return m_Code; }

 private:
  ExitCode m_Code;
};

}  // namespace NoxAgent
