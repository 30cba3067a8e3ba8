#pragma once

#include "tests/support/Texts.h"

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace TestSupport {

/// Records what the process logs while it lives, every level of it; the levels are the defaults
/// again afterwards. May be asked from any thread.
class LogCapture {
 public:
  struct Line {
    BaseSDK::ALogger::Level m_Level;
    std::string m_Channel;
    BaseSDK::AString m_Message;
    std::string m_Source;
    int m_Number;

    bool operator==(const Line&) const = default;
  };

  explicit LogCapture(BaseSDK::ALogger::Level level = BaseSDK::ALogger::Trace);
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  /// Is called with each line when it is logged, on the logging thread and under its locks.
  using Observer = std::function<void(const Line&)>;
  void Observe(Observer observer);

  std::vector<Line> Lines() const;
  void Clear();

  /// How many messages there are of exactly this text, on this level.
  unsigned Count(BaseSDK::ALogger::Level level, const BaseSDK::AString& message) const;
  /// The same on any level, for a part of the text.
  unsigned CountContaining(const BaseSDK::AString& part) const;
  bool Has(BaseSDK::ALogger::Level level, const BaseSDK::AString& message) const;
  /// The lines of one level, in order: what a test compares when nothing else may be said.
  Texts Messages(BaseSDK::ALogger::Level level) const;

 private:
  class Sink;
  std::shared_ptr<Sink> m_Sink;
};

/// For messages of failing tests.
std::ostream& operator<<(std::ostream& out, const LogCapture::Line& line);

}  // namespace TestSupport
