#include "tests/support/LogCapture.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSink.h>

#include <algorithm>
#include <new>
#include <utility>

namespace TestSupport {

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

class LogCapture::Sink : public BaseSDK::ALogSink {
 public:
  void Write(const BaseSDK::ALogRecord& record) noexcept override {
    try {
      const Line line{record.m_Level, record.m_Channel, record.m_Message, record.m_Source,
                      record.m_Line};
      if (const Observer observer = Keep(line)) {
        observer(line);
      }
    } catch (const std::bad_alloc&) {
      // When a test lets memory run out, the line is lost, as it would be in earnest.
    }
  }

  void Observe(Observer observer) {
    const AMutexGuard guard(m_Lock);
    m_Observer = std::move(observer);
  }

  std::vector<Line> Lines() {
    const AMutexGuard guard(m_Lock);
    return m_Lines;
  }

  void Clear() {
    const AMutexGuard guard(m_Lock);
    m_Lines.clear();
  }

 private:
  Observer Keep(const Line& line) {
    const AMutexGuard guard(m_Lock);
    m_Lines.push_back(line);
    return m_Observer;
  }

  BaseSDK::AMutex m_Lock;
  std::vector<Line> m_Lines NOX_GUARDED_BY(m_Lock);
  Observer m_Observer NOX_GUARDED_BY(m_Lock);
};

LogCapture::LogCapture(ALogger::Level level) : m_Sink(std::make_shared<Sink>()) {
  ALogConfig::SetDefaultLevel(level);
  ALogConfig::AddSink(m_Sink);
}

LogCapture::~LogCapture() {
  ALogConfig::RemoveSink(m_Sink);
  ALogConfig::SetDefaultLevel(ALogger::Information);
}

void LogCapture::Observe(Observer observer) {
  m_Sink->Observe(std::move(observer));
}

std::vector<LogCapture::Line> LogCapture::Lines() const {
  return m_Sink->Lines();
}

void LogCapture::Clear() {
  m_Sink->Clear();
}

unsigned LogCapture::Count(ALogger::Level level, const AString& message) const {
  const std::vector<Line> lines = Lines();
  return static_cast<unsigned>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
    return line.m_Level == level && line.m_Message == message;
  }));
}

unsigned LogCapture::CountContaining(const AString& part) const {
  const std::vector<Line> lines = Lines();
  return static_cast<unsigned>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
    return line.m_Message.Find(part) != AString::npos;
  }));
}

bool LogCapture::Has(ALogger::Level level, const AString& message) const {
  return Count(level, message) > 0;
}

Texts LogCapture::Messages(ALogger::Level level) const {
  Texts messages;
  for (const Line& line : Lines()) {
    if (line.m_Level == level) {
      messages.push_back(line.m_Message.ToUtf8());
    }
  }
  return messages;
}

std::ostream& operator<<(std::ostream& out, const LogCapture::Line& line) {
  return out << ALogConfig::LevelName(line.m_Level) << ' ' << line.m_Channel << " ["
             << line.m_Source << ':' << line.m_Number << "] " << line.m_Message.ToUtf8();
}

}  // namespace TestSupport
