#pragma once

#include <BaseSDK/AString.h>

#include <functional>

namespace NoxAgent {

/// What the agent takes from the process it runs in, gathered so that the rules on it can be tried.
struct Environment {
  bool m_IsRoot = false;
  /// An environment variable, empty when it is unset.
  std::function<BaseSDK::AString(const char* name)> m_Variable;
  /// The directory that the program file lies in.
  BaseSDK::AString m_ProgramDir;
  BaseSDK::AString m_WorkingDir;

  /// That of this process.
  static Environment OfProcess();
};

}  // namespace NoxAgent
