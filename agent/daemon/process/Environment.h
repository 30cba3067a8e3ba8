#pragma once

#include <BaseSDK/AString.h>

#include <functional>

namespace NoxAgent {

/// What the agent takes from the process that it runs in. It is gathered here so that tests can
/// give the rules that depend on it another process.
struct Environment {
  bool m_IsRoot = false;
  /// An environment variable, empty when it is unset.
  std::function<BaseSDK::AString(const char* name)> m_Variable;
  /// The directory that the program file lies in.
  BaseSDK::AString m_ProgramDir;
  BaseSDK::AString m_WorkingDir;
  /// The directory of the control group that runs can be put below; empty when there is none.
  BaseSDK::AString m_RunGroup;

  /// The environment of this process.
  static Environment OfProcess();
};

}  // namespace NoxAgent
