#pragma once

#include "agent/client/AgentApi.h"
#include "agent/client/ExitCode.h"

#include <istream>
#include <ostream>
#include <string>

namespace NoxAgent {

/// What a command of noxctl works with.
struct CommandContext {
  std::istream& m_In;
  std::ostream& m_Out;
  std::ostream& m_Err;

  /// The options that every command has.
  std::string m_Socket;
  std::string m_RuntimeDirectory;
  bool m_Json = false;

  /// What the command that ran leaves behind when it does not throw.
  ExitCode m_ExitCode = ExitCode::Ok;

  AgentApi Agent() const;
  void PrintJson(const Json& value) const;
};

}  // namespace NoxAgent
