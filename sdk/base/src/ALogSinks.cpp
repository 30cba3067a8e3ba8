#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSinks.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

// Of the logging library the rest sees nothing; base.map hides what this file instantiates of it.
#include <spdlog/sinks/ansicolor_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

namespace BaseSDK {

namespace {

/// The level name comes in the place of the function's: the library has no level "notice".
constexpr const char* PlainPattern = "%Y-%m-%d %H:%M:%S.%e %! %n: %v (%g:%#)";
constexpr const char* ColourPattern = "%Y-%m-%d %H:%M:%S.%e %^%!%$ %n: %v (%g:%#)";

/// For the colour; in the order of ALogger::Level.
constexpr std::array Severities = {spdlog::level::err,  spdlog::level::warn,  spdlog::level::info,
                                   spdlog::level::info, spdlog::level::debug, spdlog::level::trace};

/// Syslog's numbers, in the order of ALogger::Level.
constexpr std::array JournalPrefixes = {"<3>", "<4>", "<5>", "<6>", "<7>", "<7>"};

/// UTF-8 that cannot play with a terminal or pass for messages of its own: every line after the
/// first begins with `linePrefix`, other control characters become \xNN, final line feeds go.
std::string Tamed(const AString& message, std::string_view linePrefix) {
  std::string text = message.ToUtf8();
  text.erase(text.find_last_not_of("\r\n") + 1);  // npos + 1 is 0
  std::string tamed;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      tamed += '\n';
      tamed += linePrefix;
    } else if ((byte < 0x20 && c != '\t') || byte == 0x7F) {
      constexpr char Digits[] = "0123456789abcdef";
      tamed += {'\\', 'x', Digits[byte >> 4], Digits[byte & 15]};
    } else {
      tamed += c;
    }
  }
  return tamed;
}

class LibrarySink : public ALogSink {
 public:
  LibrarySink(std::shared_ptr<spdlog::sinks::sink> sink, const char* pattern)
      : m_Sink(std::move(sink)) {
    m_Sink->set_pattern(pattern);
  }

  void Write(const ALogRecord& record) noexcept override {
    try {
      Hand(record, Tamed(record.m_Message, "    "));
    } catch (const std::exception&) {
      // A log that cannot be written must not stop the work it tells of.
    }
  }

 protected:
  void Hand(const ALogRecord& record, const std::string& text) {
    const auto level = static_cast<std::size_t>(record.m_Level);
    const spdlog::source_loc place(record.m_Source, record.m_Line,
                                   ALogConfig::LevelName(record.m_Level));
    m_Sink->log(
        spdlog::details::log_msg(record.m_Time, place, record.m_Channel, Severities[level], text));
    m_Sink->flush();
  }

 private:
  const std::shared_ptr<spdlog::sinks::sink> m_Sink;
};

class JournalSink : public LibrarySink {
 public:
  JournalSink() : LibrarySink(std::make_shared<spdlog::sinks::stderr_sink_mt>(), "%v") {}

  void Write(const ALogRecord& record) noexcept override {
    try {
      const std::string prefix = JournalPrefixes[static_cast<std::size_t>(record.m_Level)];
      Hand(record, prefix + record.m_Channel + ": " + Tamed(record.m_Message, prefix + "    "));
    } catch (const std::exception&) {
      // As above.
    }
  }
};

/// The variable names the stream by device and inode: the program may have been given another one
/// since.
bool IsJournal() {
  const char* const stream = std::getenv("JOURNAL_STREAM");
  struct stat info {};
  return stream != nullptr && fstat(STDERR_FILENO, &info) == 0 &&
         std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino) == stream;
}

}  // namespace

std::shared_ptr<ALogSink> ALogSinks::Stderr() {
  if (IsJournal()) {
    return std::make_shared<JournalSink>();
  }
  if (isatty(STDERR_FILENO) != 1) {
    return std::make_shared<LibrarySink>(std::make_shared<spdlog::sinks::stderr_sink_mt>(),
                                         PlainPattern);
  }
  return std::make_shared<LibrarySink>(
      std::make_shared<spdlog::sinks::ansicolor_stderr_sink_mt>(spdlog::color_mode::always),
      ColourPattern);
}

std::shared_ptr<ALogSink> ALogSinks::RotatingFile(const AString& path, std::size_t maxBytes,
                                                  unsigned maxFiles, AString& error) {
  try {
    return std::make_shared<LibrarySink>(
        std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path.ToUtf8(), maxBytes, maxFiles),
        PlainPattern);
  } catch (const std::exception& problem) {
    error = AString(problem.what());
    return nullptr;
  }
}

}  // namespace BaseSDK
