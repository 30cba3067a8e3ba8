#pragma once

#include "agent/client/AgentApi.h"
#include "agent/client/ExitCode.h"

#include <istream>
#include <ostream>
#include <string>

namespace NoxAgent {

/// What every command of noxctl is given: its streams, the options that all commands have, and a
/// place for its exit code.
struct CommandContext {
  std::istream& m_In;
  std::ostream& m_Out;
  std::ostream& m_Err;

  /// The options that every command has.
  std::string m_Socket;
  std::string m_RuntimeDirectory;
  bool m_Json = false;

  /// What the command sets as the exit code of noxctl when it does not throw.
  ExitCode m_ExitCode = ExitCode::Ok;

  /// The agent that the options mean; nothing is sent yet.
  AgentApi Agent() const;
  void PrintJson(const Json& value) const;
  /// One line on the error stream, of JSON if that was asked for: {"error": {"code", "message"}}
  /// with "line" and "column" where a document is concerned, and "id" when the error is that of one
  /// task among several.
  void PrintError(const CommandError& error, const std::string& id = {}) const;
  /// The same for a warning: {"warning": {"message", ...}}. `warning` has a member "message".
  void PrintWarning(const Json& warning) const;
};

}  // namespace NoxAgent
