#pragma once

#include <optional>
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

/// Ends a command with this exit code. what() is one line: what went wrong, and what to do about
/// it.
class CommandError : public std::runtime_error {
 public:
  /// A place in a task document; both count from 1.
  struct Place {
    long m_Line = 0;
    long m_Column = 0;
  };

  CommandError(ExitCode code, const std::string& message, std::string name = {},
               std::optional<Place> place = {})
      : std::runtime_error(message), m_Code(code), m_Name(std::move(name)), m_Place(place) {}

  ExitCode Code() const { return m_Code; }
  /// What programs know the error by: the agent's code, such as "bad-task-id", if it gave one; else
  /// a word for the exit code.
  std::string Name() const;
  const std::optional<Place>& InDocument() const { return m_Place; }

 private:
  ExitCode m_Code;
  std::string m_Name;
  std::optional<Place> m_Place;
};

}  // namespace NoxAgent
