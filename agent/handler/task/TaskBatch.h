#pragma once

#include <BaseSDK/AString.h>

#include <vector>

namespace NoxHandler {

/// What the scheduler hands over: one entry per due task, "ID:late:neverRun:killAtEnd;" with the ID
/// URL-encoded and flags of "0" or "1". docs/plugins.md describes the meaning.
struct TaskBatch {
  struct Entry {
    BaseSDK::AString m_TaskId;  ///< decoded; names the task's files, so it is a plain file name
    bool m_Late = false;
    bool m_NeverRun = false;
    bool m_KillAtEnd = false;
    long m_HandedOver = 0;  ///< when the handler was given it, in seconds since the epoch

    bool operator==(const Entry&) const = default;
  };

  std::vector<Entry> m_Entries;             ///< in the order of the text
  std::vector<BaseSDK::AString> m_Invalid;  ///< entries that cannot be read, as they stand

  /// Never fails: entries that cannot be read are put into m_Invalid.
  static TaskBatch Parse(const BaseSDK::AString& text);

  /// Whether files can be named after the ID: a plain file name that leaves room for the endings.
  static bool IsTaskId(const BaseSDK::AString& id);
};

}  // namespace NoxHandler
