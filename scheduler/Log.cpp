#include "scheduler/Log.h"

#include <BaseSDK/ASingleton.h>

namespace {

struct FileLogger {
  BaseSDK::ALogger& m_Logger = BaseSDK::ALogger::GetLogger("Corvane::Agent::TaskScheduler");
};

}  // namespace

BaseSDK::ALogger& SchedulerLogger() {
  return BaseSDK::ASingleton<FileLogger>::Instance().m_Logger;
}
