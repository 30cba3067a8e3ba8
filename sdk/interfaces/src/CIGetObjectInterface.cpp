#include <AgentInterfacesV3/CIGetObjectInterface.h>
#include <AgentSDK/AHost.h>

namespace Corvane::AgentInterfacesV3 {

long CIGetObjectInterface(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                          unsigned long flags, void*& object) {
  object = nullptr;
  AgentSDK::AHost* const host = AgentSDK::AHost::Current();
  if (host == nullptr) {
    return -1;
  }
  const long result = host->OpenObject(classId, interfaceId, flags, object);
  if (result < 0) {
    object = nullptr;
  }
  return result;
}

}  // namespace Corvane::AgentInterfacesV3
