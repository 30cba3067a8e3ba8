#include "agent/daemon/process/QueuedSink.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

using BaseSDK::ALogger;
using BaseSDK::ALogRecord;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

// A reader that reads when it is let.
class Reader : public BaseSDK::ALogSink {
 public:
  void Write(const ALogRecord& record) noexcept override {
    std::unique_lock lock(m_Lock);
    ++m_Waiting;
    m_Changed.notify_all();
    m_Changed.wait(lock, [this] { return !m_IsStalled; });
    m_Texts.push_back(record.m_Message.ToUtf8());
    m_Places.push_back(record.m_Channel + " " + record.m_Source + " " +
                       std::to_string(record.m_Line));
  }
  void Stall(bool isStalled) {
    const std::lock_guard guard(m_Lock);
    m_IsStalled = isStalled;
    m_Changed.notify_all();
  }
  // A message has come and is not let through.
  void AwaitOne() {
    std::unique_lock lock(m_Lock);
    m_Changed.wait(lock, [this] { return m_Waiting > m_Texts.size(); });
  }
  std::vector<std::string> Texts() {
    const std::lock_guard guard(m_Lock);
    return m_Texts;
  }
  std::string LastPlace() {
    const std::lock_guard guard(m_Lock);
    return m_Places.back();
  }

 private:
  std::mutex m_Lock;
  std::condition_variable m_Changed;
  bool m_IsStalled = false;
  std::size_t m_Waiting = 0;
  std::vector<std::string> m_Texts;
  std::vector<std::string> m_Places;
};

class QueuedSinkTest : public testing::Test {
 protected:
  void Log(const std::string& text, ALogger::Level level = ALogger::Information) {
    const std::string channel = "Test";
    const AString message = AString::FromUtf8(text);
    m_Sink->Write({level, channel, message, "Source", 7, std::chrono::system_clock::now()});
  }
  // One message is with the reader, and the queue is full.
  void Fill() {
    m_Reader->Stall(true);
    Log("first");
    m_Reader->AwaitOne();
    for (std::size_t i = 0; i < QueuedSink::MaxQueued; ++i) {
      Log("queued");
    }
  }
  // As long as it takes: each try is bounded.
  void FlushAll() {
    while (!m_Sink->Flush()) {
    }
  }

  const std::shared_ptr<Reader> m_Reader = std::make_shared<Reader>();
  std::unique_ptr<QueuedSink> m_Sink = std::make_unique<QueuedSink>(m_Reader);
};

TEST_F(QueuedSinkTest, WritesAllInOrder) {
  for (int i = 0; i < 100; ++i) {
    Log(std::to_string(i));
  }
  FlushAll();
  const auto texts = m_Reader->Texts();
  ASSERT_EQ(texts.size(), 100U);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(texts[i], std::to_string(i));
  }
  EXPECT_EQ(m_Reader->LastPlace(), "Test Source 7");
}

TEST_F(QueuedSinkTest, AStalledReaderStopsNobodyAndHearsWhatItHasMissed) {
  Fill();
  for (int i = 0; i < 42; ++i) {
    Log("lost");
  }
  m_Reader->Stall(false);
  FlushAll();
  const auto texts = m_Reader->Texts();
  ASSERT_EQ(texts.size(), QueuedSink::MaxQueued + 2);
  EXPECT_EQ(texts[0], "first");
  EXPECT_EQ(texts[1], "42 messages were dropped because nobody read the log");
  EXPECT_EQ(texts[2], "queued");
}

TEST_F(QueuedSinkTest, AnErrorWaitsAMomentOnce) {
  Fill();
  const auto begin = std::chrono::steady_clock::now();
  Log("error", ALogger::Error);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, QueuedSink::Patience);
  Log("error", ALogger::Error);
  m_Reader->Stall(false);
  FlushAll();
  EXPECT_EQ(m_Reader->Texts()[1], "2 messages were dropped because nobody read the log");
  Log("error", ALogger::Error);
  FlushAll();
  EXPECT_EQ(m_Reader->Texts().back(), "error");
}

TEST_F(QueuedSinkTest, WritesWhatIsQueuedBeforeItEnds) {
  for (int i = 0; i < 100; ++i) {
    Log("x");
  }
  FlushAll();
  m_Sink.reset();
  EXPECT_EQ(m_Reader->Texts().size(), 100U);
}

TEST_F(QueuedSinkTest, EndsAlsoWhenTheReaderStalls) {
  Fill();
  m_Sink.reset();
  EXPECT_TRUE(m_Reader->Texts().empty());
  m_Reader->Stall(false);
}

}  // namespace
}  // namespace NoxAgent
