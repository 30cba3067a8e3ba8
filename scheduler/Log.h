#pragma once

#include <BaseSDK/ALogger.h>

/// The one log of this folder. Its files are rooms of one house: they share the logger and the
/// source name.
BaseSDK::ALogger& SchedulerLogger();

constexpr char SchedulerSource[] = "TaskSchedulerObject";

/// `level` is a plain name such as Trace; `message` is built only when that level is enabled.
#define SCHEDULER_LOG(level, message) \
  ALOG(SchedulerLogger(), ::BaseSDK::ALogger::level, SchedulerSource, message)
