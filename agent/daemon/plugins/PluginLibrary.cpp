#include "agent/daemon/plugins/PluginLibrary.h"

#include "agent/daemon/AgentError.h"

#include <dlfcn.h>

#include <string>

using BaseSDK::AString;

namespace NoxAgent {

PluginLibrary::PluginLibrary(const AString& path) : m_Path(path) {
  const std::string name = path.ToUtf8();
  // A shared object has one plug-in's object, however often it is opened.
  if (void* const loaded = ::dlopen(name.c_str(), RTLD_NOW | RTLD_NOLOAD); loaded != nullptr) {
    (void)::dlclose(loaded);
    throw AgentError(AgentError::Kind::Failure,
                     AString("%1 is loaded already: it cannot be two plug-ins at once").Arg(path));
  }
  m_Handle = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_Handle == nullptr) {
    throw AgentError(AgentError::Kind::Failure, AString("cannot load it: ") + ::dlerror());
  }
  // The agent does not call PluginMain itself, but what lacks it is no plug-in.
  (void)Resolve("PluginMain");
  m_Initialize = reinterpret_cast<int (*)(int)>(Resolve("PluginInitialize"));
  m_Uninitialize = reinterpret_cast<int (*)(bool)>(Resolve("PluginUninitialize"));
  m_GetAttribute =
      reinterpret_cast<int (*)(const char*, AString&)>(Resolve("PluginGetAttributeV3"));
}

PluginLibrary::~PluginLibrary() {
  if (!m_Keep) {
    (void)::dlclose(m_Handle);
  }
}

void* PluginLibrary::Resolve(const char* function) const {
  void* const address = ::dlsym(m_Handle, function);
  if (address == nullptr) {
    (void)::dlclose(m_Handle);
    throw AgentError(AgentError::Kind::Failure,
                     AString("%1 is no plug-in: it lacks the function %2").Arg(m_Path, function));
  }
  return address;
}

}  // namespace NoxAgent
