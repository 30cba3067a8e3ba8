#pragma once

#include <BaseSDK/AGuid.h>

namespace Corvane::AgentInterfacesV3 {

/// For hosts, to answer OpenObject with: a client interface whose calls are sent as requests on the
/// message queue of that number. 1, and `object` is a pointer to the class of `interfaceId` that
/// its Release destroys; -1, and `object` is null, when there is no such queue or interface.
///
/// Whether the object behind the queue serves the interface is not asked. The proxy may outlive the
/// queue; its calls then result in CALL_NOT_DELIVERED, those that hand over a batch in
/// TASK_HANDLER_DECLINED. [any thread]
long MakeProxy(int queue, const BaseSDK::AGuid& interfaceId, void*& object);

}  // namespace Corvane::AgentInterfacesV3
