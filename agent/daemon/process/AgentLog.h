// The agent's own log channel.
#pragma once

#include <BaseSDK/ALogger.h>

namespace NoxAgent {

BaseSDK::ALogger& AgentLog();

}  // namespace NoxAgent
