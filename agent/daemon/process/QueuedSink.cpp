#include "agent/daemon/process/QueuedSink.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

using BaseSDK::ALogger;
using BaseSDK::ALogRecord;
using BaseSDK::ALogSink;
using BaseSDK::AString;

namespace NoxAgent {

// Copies all texts: the plug-in that logged may be unloaded by the time the message is written.
struct QueuedSink::Message {
  explicit Message(const ALogRecord& record)
      : m_Level(record.m_Level),
        m_Channel(record.m_Channel),
        m_Text(record.m_Message),
        m_Source(record.m_Source),
        m_Line(record.m_Line),
        m_Time(record.m_Time) {}

  void WriteTo(ALogSink& sink) const {
    sink.Write({m_Level, m_Channel, m_Text, m_Source.c_str(), m_Line, m_Time});
  }

  ALogger::Level m_Level;
  std::string m_Channel;
  AString m_Text;
  std::string m_Source;
  int m_Line;
  std::chrono::system_clock::time_point m_Time;
};

struct QueuedSink::State {
  explicit State(std::shared_ptr<ALogSink> target) : m_Target(std::move(target)) {}

  void Run();
  void Take(const ALogRecord& record);
  bool WaitUntilWritten();
  void WriteDropped(unsigned long dropped) const;

  const std::shared_ptr<ALogSink> m_Target;
  std::mutex m_Lock;
  std::condition_variable m_Added;
  std::condition_variable m_Written;
  std::deque<Message> m_Queue;
  bool m_IsWriting = false;
  bool m_IsStalled = false;  ///< somebody has waited in vain since the last message was written
  bool m_IsEnding = false;
  unsigned long m_WrittenCount = 0;
  unsigned long m_Dropped = 0;
};

void QueuedSink::State::Run() {
  std::unique_lock lock(m_Lock);
  for (;;) {
    m_Added.wait(lock, [this] { return m_IsEnding || !m_Queue.empty(); });
    if (m_Queue.empty()) {
      return;
    }
    const Message message = std::move(m_Queue.front());
    m_Queue.pop_front();
    m_IsWriting = true;
    lock.unlock();
    message.WriteTo(*m_Target);
    lock.lock();
    ++m_WrittenCount;
    m_IsStalled = false;
    if (const unsigned long dropped = std::exchange(m_Dropped, 0); dropped != 0) {
      lock.unlock();
      WriteDropped(dropped);
      lock.lock();
    }
    m_IsWriting = false;
    m_Written.notify_all();
  }
}

void QueuedSink::State::Take(const ALogRecord& record) {
  std::unique_lock lock(m_Lock);
  const auto hasRoom = [this] { return m_Queue.size() < MaxQueued; };
  if (!hasRoom() && record.m_Level == ALogger::Error && !m_IsStalled) {
    m_IsStalled = !m_Written.wait_for(lock, Patience, hasRoom);
  }
  if (hasRoom()) {
    m_Queue.emplace_back(record);
    m_Added.notify_one();
  } else {
    ++m_Dropped;
  }
}

// A slow reader gets it all, one that reads nothing for Patience does not, nor one that takes for
// ever.
bool QueuedSink::State::WaitUntilWritten() {
  std::unique_lock lock(m_Lock);
  bool isWritten = false;
  bool isMoving = true;
  for (int wait = 0; !isWritten && isMoving && wait < MostWaits; ++wait) {
    const unsigned long before = m_WrittenCount;
    isWritten =
        m_Written.wait_for(lock, Patience, [this] { return m_Queue.empty() && !m_IsWriting; });
    isMoving = m_WrittenCount != before;
  }
  return isWritten;
}

void QueuedSink::State::WriteDropped(unsigned long dropped) const {
  const std::string channel = "Corvane::Agent::Daemon";
  const AString text = AString("%1 messages were dropped because nobody read the log")
                           .Arg(AString().SetNum(dropped, 'u'));
  m_Target->Write(
      {ALogger::Warning, channel, text, "QueuedSink", 0, std::chrono::system_clock::now()});
}

QueuedSink::QueuedSink(std::shared_ptr<ALogSink> target)
    : m_State(std::make_shared<State>(std::move(target))) {
  // Detached: it may be in a call that does not come back, and then nobody could wait for its end.
  std::thread([state = m_State] { state->Run(); }).detach();
}

QueuedSink::~QueuedSink() {
  (void)Flush();
  const std::lock_guard guard(m_State->m_Lock);
  m_State->m_IsEnding = true;
  m_State->m_Added.notify_one();
}

void QueuedSink::Write(const ALogRecord& record) noexcept {
  try {
    m_State->Take(record);
  } catch (const std::exception&) {
    // Memory ran out. A log that cannot be written must not stop the work that it tells of.
  }
}

bool QueuedSink::Flush() {
  return m_State->WaitUntilWritten();
}

}  // namespace NoxAgent
