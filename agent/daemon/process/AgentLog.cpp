#include "agent/daemon/process/AgentLog.h"

namespace NoxAgent {

BaseSDK::ALogger& AgentLog() {
  static BaseSDK::ALogger& logger = BaseSDK::ALogger::GetLogger("Corvane::Agent::Daemon");
  return logger;
}

}  // namespace NoxAgent
