#pragma once

#include <BaseSDK/AGuid.h>

namespace Corvane::AgentInterfacesV3 {

/// The interfaces' identifiers, as their tables give them.
extern const BaseSDK::AGuid IID_INoxObject;
extern const BaseSDK::AGuid IID_INoxVeskClientAgent;
extern const BaseSDK::AGuid IID_INoxTaskScheduler;
extern const BaseSDK::AGuid IID_INoxScheduledTaskHandler;
extern const BaseSDK::AGuid IID_INoxCommandHandler;

}  // namespace Corvane::AgentInterfacesV3
