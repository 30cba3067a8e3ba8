#pragma once

#include <BaseSDK/AGuid.h>
#include <BaseSDK/AString.h>

namespace Corvane::AgentInterfacesV3 {

/// Opens the interface `interfaceId` of the object whose class identifier is `classId`, by asking
/// the host. On success `object` points to the interface's class and is to be released once, best
/// by a CIClient. On failure, also when there is no host, the result is negative and `object` null.
/// `flags` is 0. [any thread]
long CIGetObjectInterface(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                          unsigned long flags, void*& object);

}  // namespace Corvane::AgentInterfacesV3
