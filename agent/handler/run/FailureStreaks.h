#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace NoxHandler {

/// How many runs of a task have failed in a row, and whether its command for that was run. The file
/// "streaks" in the directory of the records holds them, so that they go on over a restart. [one
/// thread at a time]
class FailureStreaks {
 public:
  struct Streak {
    long m_Failures = 0;
    bool m_IsTold = false;  ///< on_failure was run
    long m_End = 0;         ///< of the last run, in seconds since the epoch

    bool operator==(const Streak&) const = default;
  };

  /// How many tasks are remembered; those whose last run ended first are forgotten first.
  static constexpr std::size_t Most = 1000;

  /// Reads the file. One that is not there is empty; lines that cannot be read are logged and left
  /// out.
  explicit FailureStreaks(const BaseSDK::AString& directory);

  /// That of the task; one without failures when none is known.
  Streak Of(const BaseSDK::AString& taskId) const;
  /// In place of an earlier one of the task.
  void Note(const BaseSDK::AString& taskId, const Streak& streak);
  /// The task's last run succeeded, or the task is gone.
  void Forget(const BaseSDK::AString& taskId);
  /// Writes what has changed since the last call; the file is the old one or the new one at every
  /// moment. That it cannot be written is logged; the next call tries again.
  void Save();

  const std::map<BaseSDK::AString, Streak>& All() const { return m_Streaks; }

 private:
  void ReadLine(std::string_view line);
  std::string Encode() const;

  const BaseSDK::AString m_FileName;
  std::map<BaseSDK::AString, Streak> m_Streaks;  ///< by task
  bool m_IsChanged = false;
};

}  // namespace NoxHandler
