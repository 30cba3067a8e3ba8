#include "agent/handler/Log.h"

#include <BaseSDK/ASingleton.h>

namespace NoxHandler {

namespace {

struct HandlerLogger {
  BaseSDK::ALogger& m_Logger = BaseSDK::ALogger::GetLogger("Corvane::Agent::CommandHandler");
};

}  // namespace

BaseSDK::ALogger& HandlerLog() {
  return BaseSDK::ASingleton<HandlerLogger>::Instance().m_Logger;
}

BaseSDK::AString DecimalText(long number) {
  return BaseSDK::AString().SetNum(number, 'd');
}

}  // namespace NoxHandler
