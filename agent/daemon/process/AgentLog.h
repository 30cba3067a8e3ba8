#pragma once

#include <BaseSDK/ALogger.h>

namespace NoxAgent {

/// The logger of the daemon's own messages. [any thread]
BaseSDK::ALogger& AgentLog();

}  // namespace NoxAgent
