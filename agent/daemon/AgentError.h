#pragma once

#include <BaseSDK/AString.h>

#include <stdexcept>

namespace NoxAgent {

/// A failure that ends the agent's start, or a refresh. what() is one line: what is wrong, where,
/// and what to do about it.
class AgentError : public std::runtime_error {
 public:
  /// The exit status of noxagentd; docs/operation.md lists them.
  enum class Kind { Failure = 1, Usage = 2, AlreadyRunning = 3 };

  AgentError(Kind kind, const BaseSDK::AString& message)
      : std::runtime_error(message.ToUtf8()), m_Kind(kind) {}

  Kind Reason() const { return m_Kind; }
  int ExitStatus() const { return static_cast<int>(m_Kind); }

 private:
  Kind m_Kind;
};

}  // namespace NoxAgent
