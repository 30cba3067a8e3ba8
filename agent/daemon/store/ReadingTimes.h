#pragma once

#include <BaseSDK/AString.h>

#include <atomic>
#include <optional>

namespace NoxAgent {

/// When the scheduler reads its task files: at its start, and again whenever an hour has passed
/// since it came to the end of them. Seconds since the epoch.
///
/// [any thread]
class ReadingTimes {
 public:
  /// A reading has come to its end or has failed, now.
  void NoteEnd();
  /// When the next reading comes at the latest, in seconds since the epoch; nothing before the
  /// first one has ended.
  std::optional<long> Next() const;
  /// The local time of Next() for messages, such as "14:03:22"; "?" before the first reading.
  BaseSDK::AString NextText() const;

 private:
  std::atomic<long> m_LastEnd{0};
};

}  // namespace NoxAgent
