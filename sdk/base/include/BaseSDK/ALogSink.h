#pragma once

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <chrono>
#include <string>

namespace BaseSDK {

/// One message on its way to the sinks; valid during the call only.
struct ALogRecord {
  ALogger::Level m_Level;
  const std::string& m_Channel;
  const AString& m_Message;
  const char* m_Source;  ///< never null
  int m_Line;
  std::chrono::system_clock::time_point m_Time;
};

/// Where messages go. ALogConfig::AddSink puts a sink into force. Write is called from any thread,
/// by several at once, and must not log. A sink whose code lives in a plug-in must be removed
/// before that plug-in unloads.
class ALogSink {
 public:
  virtual ~ALogSink() = default;

  /// Must not throw: there is nobody left to tell.
  virtual void Write(const ALogRecord& record) noexcept = 0;
};

}  // namespace BaseSDK
