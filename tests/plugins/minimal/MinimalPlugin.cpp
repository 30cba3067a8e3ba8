// The smallest plug-in that the agent can load: start here. Its object serves INoxObject, which
// every object does, and reports the last event of the agent's life. Beside this file it takes
// nox_add_plugin in a CMakeLists.txt and a line in the agent's configuration.
#include "Common/PluginBase.h"

#include <AgentInterfacesV3/INoxObject_impl.h>
#include <AgentInterfacesV3/InterfaceIds.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using BaseSDK::AString;

class MinimalObject_i : public virtual INoxObject_impl, public APluginBase {
 public:
  // What the agent asks a plug-in for.
  int Initialize() override { return 1; }
  int Uninitialize(unsigned int /*forced*/) override { return 1; }
  int GetAttribute(const char* name, AString& value) override {
    if (std::strcmp(name, "InterfaceFactory") != 0) {
      return -1;
    }
    INoxInterfaceFactory* const factory = this;
    value.SetNum(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(factory)), 'x');
    return 1;
  }

  // What the object is.
  int GetVersion() override { return 3; }
  int QueryInterface(const UUID& interfaceId, void*& object) override {
    return QueryInterface(AGuid(interfaceId), object);
  }
  int QueryInterface(const AGuid& interfaceId, void*& object) override {
    const bool known = interfaceId.Compare(IID_INoxObject) == 0;
    object = known ? static_cast<INoxObject_impl*>(this) : nullptr;
    return known ? 0 : -1;
  }

  // What the object does: INoxObject, called on the agent's threads.
  int ObjectDebugInfo(AString& report) override {
    report = AString(L"Last notification: %1\n").Arg(AString().SetNum(m_LastKind.load(), 'd'));
    return 1;
  }
  int NotifyObject(long kind, long /*code*/, const AString& /*text*/) override {
    m_LastKind = kind;
    return 0;
  }

 private:
  std::atomic<long> m_LastKind = -1;
};

APluginBase* PluginMain() {
  return new (std::nothrow) MinimalObject_i;
}
