#include "agent/daemon/config/DefaultPaths.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/BuildInfo.h"

#include <unistd.h>

using BaseSDK::AString;

namespace NoxAgent {

AString DefaultPaths::StateDir(const Environment& environment) {
  if (environment.m_IsRoot) {
    return "/var/lib/nox";
  }
  const AString stateHome = environment.m_Variable("XDG_STATE_HOME");
  if (stateHome[0] == L'/') {
    return stateHome + "/nox";
  }
  const AString home = environment.m_Variable("HOME");
  if (home[0] != L'/') {
    throw AgentError(AgentError::Kind::Usage,
                     "no directory to keep tasks in: HOME is not set; say --state-dir DIR");
  }
  return home + "/.local/state/nox";
}

AString DefaultPaths::RuntimeDir(const Environment& environment, const AString& stateDir) {
  if (environment.m_IsRoot) {
    return "/run/nox";
  }
  const AString runtimeDir = environment.m_Variable("XDG_RUNTIME_DIR");
  return runtimeDir[0] == L'/' ? runtimeDir + "/nox" : stateDir + "/run";
}

AString DefaultPaths::Plugin(const Environment& environment, const AString& fileName) {
  const AString& programDir = environment.m_ProgramDir;
  const AString prefix = programDir.Left(programDir.ReverseFind(L'/')) + "/";
  const AString installed = prefix + PluginDir + "/" + fileName;
  const AString built = prefix + "lib/" + fileName;
  const bool onlyBuilt = ::access(installed.ToUtf8().c_str(), F_OK) != 0 &&
                         ::access(built.ToUtf8().c_str(), F_OK) == 0;
  return onlyBuilt ? built : installed;
}

}  // namespace NoxAgent
