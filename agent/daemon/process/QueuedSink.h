#pragma once

#include <BaseSDK/ALogSink.h>

#include <chrono>
#include <cstddef>
#include <memory>

namespace NoxAgent {

/// Hands messages to another sink on a thread of its own. So a reader that has stopped reading (a
/// full pipe at standard error) holds up nobody who logs. When the queue is full, messages are
/// dropped and counted, and the count is logged when writing goes on. An error waits Patience for
/// room before it is dropped, unless an earlier one has waited in vain since the last message was
/// written.
///
/// The destructor waits for the queue to be written, as Flush does. A thread that is stuck in the
/// other sink by then is left as it is, with the sink, until the process ends.
class QueuedSink final : public BaseSDK::ALogSink {
 public:
  /// How many messages may wait.
  static constexpr std::size_t MaxQueued = 2000;
  /// How long an error waits for room, and Flush for a message to be written.
  static constexpr std::chrono::seconds Patience{1};
  /// How many times Patience Flush waits at most.
  static constexpr int MostWaits = 10;

  explicit QueuedSink(std::shared_ptr<ALogSink> target);
  QueuedSink(const QueuedSink&) = delete;
  QueuedSink& operator=(const QueuedSink&) = delete;
  ~QueuedSink() override;

  void Write(const BaseSDK::ALogRecord& record) noexcept override;
  /// Waits until all that was logged before is written; false when nothing is written for Patience,
  /// or when all of it takes more than MostWaits times as long.
  bool Flush();

 private:
  struct Message;
  struct State;

  /// The thread's too.
  const std::shared_ptr<State> m_State;
};

}  // namespace NoxAgent
