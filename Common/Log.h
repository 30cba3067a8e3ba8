#pragma once

#include <BaseSDK/ALogger.h>
#include <BaseSDK/ASingleton.h>

namespace Nox {

/// Where lines of the log come from: the channel of a source file's logger, and the name that its
/// lines carry. The files of scheduler/ share both.
namespace LogOrigin {

struct Frame {
  static constexpr char Channel[] = "Corvane::Agent::Common::PluginBase";
  static constexpr char Source[] = "Common/PluginBase";
};
struct Scheduler {
  static constexpr char Channel[] = "Corvane::Agent::TaskScheduler";
  static constexpr char Source[] = "TaskSchedulerObject";
};
struct Task {
  static constexpr const char* Channel = Scheduler::Channel;
  static constexpr char Source[] = "Task";
};

}  // namespace LogOrigin

/// The logger of an origin, made on first use. [any thread]
template <class Origin>
BaseSDK::ALogger& Logger() {
  struct Holder {
    BaseSDK::ALogger& m_Logger = BaseSDK::ALogger::GetLogger(Origin::Channel);
  };
  return BaseSDK::ASingleton<Holder>::Instance().m_Logger;
}

}  // namespace Nox

/// Logs `message`, an expression for an AString that is evaluated only when the level is enabled.
/// `origin` and `level` are plain names, such as Scheduler and Trace. Throws nothing: when there is
/// no memory for a line, or the log refuses it, the line is left out and the work goes on.
#define PLUGIN_LOG(origin, level, message)                                                     \
  do {                                                                                         \
    try {                                                                                      \
      ::BaseSDK::ALogger& pluginLogger = ::Nox::Logger<::Nox::LogOrigin::origin>();            \
      if (pluginLogger.IsEnabled(::BaseSDK::ALogger::level)) {                                 \
        pluginLogger.Log(::BaseSDK::ALogger::level, message, ::Nox::LogOrigin::origin::Source, \
                         __LINE__);                                                            \
      }                                                                                        \
    } catch (...) {                                                                            \
    }                                                                                          \
  } while (false)
