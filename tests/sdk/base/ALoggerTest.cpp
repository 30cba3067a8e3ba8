#include "ScratchDirectory.h"
#include "tests/support/Texts.h"

#include <BaseSDK/ALogConfig.h>
#include <BaseSDK/ALogSinks.h>
#include <BaseSDK/ALogger.h>
#include <BaseSDK/AMutex.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace BaseSDK {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using TestSupport::Texts;

/// Keeps what it is given as "channel level source:line message".
class RecordingSink : public ALogSink {
 public:
  void Write(const ALogRecord& record) noexcept override {
    const AMutexGuard guard(m_Lock);
    m_Lines.push_back(record.m_Channel + ' ' + ALogConfig::LevelName(record.m_Level) + ' ' +
                      record.m_Source + ':' + std::to_string(record.m_Line) + ' ' +
                      record.m_Message.ToUtf8());
  }
  std::vector<std::string> Lines() {
    const AMutexGuard guard(m_Lock);
    return m_Lines;
  }

 private:
  AMutex m_Lock;
  std::vector<std::string> m_Lines NOX_GUARDED_BY(m_Lock);
};

class ALoggerTest : public testing::Test {
 protected:
  ALoggerTest() { ALogConfig::AddSink(m_Sink); }
  ~ALoggerTest() override {
    ALogConfig::RemoveSink(m_Sink);
    ALogConfig::ResetLevels();
    ALogConfig::SetDefaultLevel(ALogger::Information);
  }

  std::shared_ptr<RecordingSink> m_Sink = std::make_shared<RecordingSink>();
};

TEST_F(ALoggerTest, SameNameIsTheSameLogger) {
  std::string name = "Test::Same";
  ALogger& logger = ALogger::GetLogger(name.c_str());
  name = "Test::Other";
  EXPECT_EQ(logger.Channel(), "Test::Same") << "the name is copied";
  EXPECT_EQ(&ALogger::GetLogger("Test::Same"), &logger);
  EXPECT_NE(&ALogger::GetLogger(name.c_str()), &logger);
  EXPECT_EQ(ALogger::GetLogger(nullptr).Channel(), "");
}

TEST_F(ALoggerTest, LevelsAreOrderedMostSevereFirst) {
  ALogger& logger = ALogger::GetLogger("Test::Levels");
  for (int set = ALogger::Error; set <= ALogger::Trace; ++set) {
    ALogConfig::SetDefaultLevel(static_cast<ALogger::Level>(set));
    for (int asked = ALogger::Error; asked <= ALogger::Trace; ++asked) {
      EXPECT_EQ(logger.IsEnabled(static_cast<ALogger::Level>(asked)), asked <= set) << set << asked;
    }
  }
}

TEST_F(ALoggerTest, LongestMatchingPrefixSetsTheLevel) {
  ALogger& before = ALogger::GetLogger("A::B::C");
  ALogConfig::SetLevel("A", ALogger::Warning);
  ALogConfig::SetLevel("A::B", ALogger::Trace);
  ALogConfig::SetLevel("A::B::C::D", ALogger::Error);
  struct LevelRow {
    const char* m_Channel;
    bool m_Traces;
    bool m_Informs;
  };
  for (const LevelRow& row :
       {LevelRow{"A", false, false}, LevelRow{"A::B", true, true}, LevelRow{"A::B::X", true, true},
        LevelRow{"A::Bx", false, false}, LevelRow{"A:B", false, true}, LevelRow{"X", false, true},
        LevelRow{"A::B::C::D", false, false}}) {
    ALogger& logger = ALogger::GetLogger(row.m_Channel);
    EXPECT_EQ(logger.IsEnabled(ALogger::Trace), row.m_Traces) << row.m_Channel;
    EXPECT_EQ(logger.IsEnabled(ALogger::Information), row.m_Informs) << row.m_Channel;
  }
  EXPECT_TRUE(before.IsEnabled(ALogger::Trace)) << "loggers that exist follow";
  ALogConfig::ResetLevels();
  EXPECT_FALSE(before.IsEnabled(ALogger::Trace));
}

TEST_F(ALoggerTest, MacroBuildsTheMessageOnlyWhenItIsWanted) {
  ALogger& logger = ALogger::GetLogger("Test::Macro");
  int built = 0;
  const auto message = [&built] {
    ++built;
    return AString("Task ID = %1").Arg("T1");
  };
  ALOG(logger, ALogger::Debug, "Task", message());
  EXPECT_EQ(built, 0);
  const int line = __LINE__ + 1;
  ALOG(logger, ALogger::Warning, "Task", message());
  EXPECT_EQ(built, 1);
  EXPECT_EQ(m_Sink->Lines(),
            Texts{"Test::Macro warning Task:" + std::to_string(line) + " Task ID = T1"});
}

TEST_F(ALoggerTest, EverySinkGetsAMessageUntilItIsRemoved) {
  ALogger& logger = ALogger::GetLogger("Test::Sinks");
  const auto second = std::make_shared<RecordingSink>();
  ALogConfig::AddSink(second);
  logger.Log(ALogger::Error, "one", nullptr, 1);
  ALogConfig::RemoveSink(second);
  logger.Log(ALogger::Error, "two", "Source", 2);
  EXPECT_EQ(second->Lines(), Texts{"Test::Sinks error :1 one"});
  EXPECT_EQ(m_Sink->Lines().size(), 2u);
  EXPECT_EQ(second.use_count(), 1) << "nothing of it is kept";
}

TEST_F(ALoggerTest, ThreadsLogWhileSinksAndLevelsChange) {
  std::atomic<bool> stop = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&stop] {
      ALogger& logger = ALogger::GetLogger("Test::Threads");
      while (!stop) {
        ALOG(logger, ALogger::Information, "Source", "x");
      }
    });
  }
  for (int i = 0; i < 200; ++i) {
    const auto sink = std::make_shared<RecordingSink>();
    ALogConfig::AddSink(sink);
    ALogConfig::SetDefaultLevel(i % 2 == 0 ? ALogger::Error : ALogger::Trace);
    ALogConfig::RemoveSink(sink);
    EXPECT_EQ(sink.use_count(), 1);
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST_F(ALoggerTest, LevelsHaveNames) {
  for (int i = ALogger::Error; i <= ALogger::Trace; ++i) {
    const auto level = static_cast<ALogger::Level>(i);
    ALogger::Level read = ALogger::Error;
    EXPECT_TRUE(ALogConfig::ParseLevel(ALogConfig::LevelName(level), read));
    EXPECT_EQ(read, level);
  }
  ALogger::Level level = ALogger::Trace;
  EXPECT_TRUE(ALogConfig::ParseLevel("INFO", level));
  EXPECT_EQ(level, ALogger::Information);
  EXPECT_FALSE(ALogConfig::ParseLevel("loud", level));
  EXPECT_FALSE(ALogConfig::ParseLevel("", level));
  EXPECT_EQ(level, ALogger::Information);
}

/// Text that would cheat whoever reads the log.
const AString Nasty = L"one\n<0>two\x1B[2J\tthree\x7F\r\n";

void WriteTo(ALogSink& sink, ALogger::Level level, const AString& message) {
  const std::string channel = "Test::Sink";
  sink.Write({level, channel, message, "Common/Source", 42, std::chrono::system_clock::now()});
}

TEST(ALogSinks, StandardErrorThatIsNoTerminalGetsTheTime) {
  testing::internal::CaptureStderr();
  (void)setenv("JOURNAL_STREAM", "1:1", 1);  // another stream's
  WriteTo(*ALogSinks::Stderr(), ALogger::Notice, "x");
  (void)unsetenv("JOURNAL_STREAM");
  WriteTo(*ALogSinks::Stderr(), ALogger::Error, "y");
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              MatchesRegex("[0-9-]+ [0-9:.]+ notice Test::Sink: x \\(Common/Source:42\\)\n"
                           "[0-9-]+ [0-9:.]+ error Test::Sink: y \\(Common/Source:42\\)\n"));
}

TEST(ALogSinks, TheJournalGetsPriorities) {
  testing::internal::CaptureStderr();
  struct stat info {};
  ASSERT_EQ(fstat(STDERR_FILENO, &info), 0);
  const std::string stream = std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino);
  (void)setenv("JOURNAL_STREAM", stream.c_str(), 1);
  const auto sink = ALogSinks::Stderr();
  for (int level = ALogger::Error; level <= ALogger::Trace; ++level) {
    WriteTo(*sink, static_cast<ALogger::Level>(level), "x");
  }
  WriteTo(*sink, ALogger::Information, Nasty);
  (void)unsetenv("JOURNAL_STREAM");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "<3>Test::Sink: x\n<4>Test::Sink: x\n<5>Test::Sink: x\n<6>Test::Sink: x\n"
            "<7>Test::Sink: x\n<7>Test::Sink: x\n"
            "<6>Test::Sink: one\n<6>    <0>two\\x1b[2J\tthree\\x7f\n");
}

TEST(ALogSinks, TerminalGetsTimeAndColour) {
  int master = -1;
  int terminal = -1;
  ASSERT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  const int before = dup(STDERR_FILENO);
  ASSERT_EQ(dup2(terminal, STDERR_FILENO), STDERR_FILENO);
  WriteTo(*ALogSinks::Stderr(), ALogger::Notice, Nasty);
  ASSERT_EQ(dup2(before, STDERR_FILENO), STDERR_FILENO);
  std::string text;
  std::array<char, 1000> buffer{};
  while (!text.ends_with(":42)\r\n")) {  // it comes in pieces
    const ssize_t length = read(master, buffer.data(), buffer.size());
    ASSERT_GT(length, 0) << text;
    text.append(buffer.data(), static_cast<std::size_t>(length));
  }
  for (const int fd : {before, terminal, master}) {
    (void)close(fd);
  }
  EXPECT_THAT(text, MatchesRegex("[0-9-]+ [0-9:.]+ .*"));
  EXPECT_THAT(text, HasSubstr("\x1B[32mnotice\x1B[m Test::Sink: one\r\n    <0>two\\x1b[2J"));
  EXPECT_THAT(text, HasSubstr("(Common/Source:42)"));
}

TEST(ALogSinks, FileGetsEverythingAndRotates) {
  const ScratchDirectory scratch;
  AString error;
  const auto sink = ALogSinks::RotatingFile(scratch.Name("agent.log"), 1000, 2, error);
  ASSERT_NE(sink, nullptr) << error.ToUtf8();
  WriteTo(*sink, ALogger::Notice, L"first \u20AC");
  EXPECT_THAT(scratch.Get("agent.log"),
              MatchesRegex("[0-9-]+ [0-9:.]+ notice Test::Sink: first \xE2\x82\xAC "
                           "\\(Common/Source:42\\)\n"));
  for (int i = 0; i < 100; ++i) {
    WriteTo(*sink, ALogger::Error, "more");
  }
  EXPECT_EQ(scratch.Files(), (FileNames{"agent.1.log", "agent.2.log", "agent.log"}));
  for (const std::string& file : scratch.Files()) {
    EXPECT_LE(scratch.Get(file).size(), 1000u) << file;
  }
}

TEST(ALogSinks, FileThatCannotBeOpenedIsExplained) {
  const ScratchDirectory scratch;
  scratch.Put("file", "");
  AString error;
  EXPECT_EQ(ALogSinks::RotatingFile(scratch.Name("file/agent.log"), 1000, 2, error), nullptr);
  EXPECT_THAT(error.ToUtf8(), HasSubstr("file/agent.log"));
}

TEST(ALogSinks, FailureToWriteIsSwallowed) {
  AString error;
  const auto sink = ALogSinks::RotatingFile("/dev/full", 1000000, 0, error);
  ASSERT_NE(sink, nullptr) << error.ToUtf8();
  for (int i = 0; i < 100; ++i) {
    WriteTo(*sink, ALogger::Error, AString::FromUtf8(std::string(1000, 'x')));
  }
}

}  // namespace
}  // namespace BaseSDK
