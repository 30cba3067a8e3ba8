#pragma once

#include <BaseSDK/ALogSink.h>

#include <chrono>
#include <cstddef>
#include <memory>

namespace NoxAgent {

/// Hands messages to another sink on a thread of its own, so that a reader who has stopped reading
/// (a full pipe at standard error) stops nobody who logs. What does not fit any more is dropped and
/// counted, and the count is logged when it goes on; errors wait a second for room first, unless it
/// stands still already.
///
/// What is still queued when this ends is written, or given up after a second: the thread and the
/// sink then stay as they are, in a call that does not come back, until the process ends.
class QueuedSink final : public BaseSDK::ALogSink {
 public:
  static constexpr std::size_t MaxQueued = 2000;
  static constexpr std::chrono::seconds Patience{1};

  explicit QueuedSink(std::shared_ptr<ALogSink> target);
  QueuedSink(const QueuedSink&) = delete;
  QueuedSink& operator=(const QueuedSink&) = delete;
  ~QueuedSink() override;

  void Write(const BaseSDK::ALogRecord& record) noexcept override;
  /// Waits until all that was logged before is written; false when that takes more than Patience.
  bool Flush();

 private:
  struct State;

  /// The thread's too.
  const std::shared_ptr<State> m_State;
};

}  // namespace NoxAgent
