#include "agent/daemon/process/Environment.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

AString ProgramDir() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof(path));
  const AString program =
      length > 0 ? AString::FromUtf8({path, static_cast<std::size_t>(length)}) : AString("/");
  return program.Left(program.ReverseFind(L'/'));
}

AString WorkingDir() {
  char path[PATH_MAX];
  return ::getcwd(path, sizeof(path)) != nullptr ? AString::FromUtf8(path) : AString("/");
}

}  // namespace

Environment Environment::OfProcess() {
  Environment environment;
  environment.m_IsRoot = ::geteuid() == 0;
  environment.m_Variable = [](const char* name) { return AString(std::getenv(name)); };
  environment.m_ProgramDir = ProgramDir();
  environment.m_WorkingDir = WorkingDir();
  return environment;
}

}  // namespace NoxAgent
