#pragma once

#include <BaseSDK/AGuid.h>

namespace Corvane::AgentInterfacesV3 {

/// For a host's OpenObject: makes a client interface that sends its calls as requests to the
/// message queue of that number. 1, and `object` points to the class of `interfaceId`; the client
/// owns it and destroys it by its Release. -1, and `object` is null, when there is no such queue or
/// interface.
///
/// The object behind the queue is not asked whether it serves the interface. The proxy may outlive
/// the queue; its calls then result in CALL_NOT_DELIVERED, those that hand over a batch in
/// TASK_HANDLER_DECLINED. [any thread]
long MakeProxy(int queue, const BaseSDK::AGuid& interfaceId, void*& object);

}  // namespace Corvane::AgentInterfacesV3
