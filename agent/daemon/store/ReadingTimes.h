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
  /// A reading has come to its end, or has failed.
  void NoteEnd();
  /// When the next one comes at the latest; nothing before the first one.
  std::optional<long> Next() const;
  /// "14:03:22", for messages; "the next reading" is what it is the time of.
  BaseSDK::AString NextText() const;

 private:
  std::atomic<long> m_LastEnd{0};
};

}  // namespace NoxAgent
