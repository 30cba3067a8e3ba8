#pragma once

#include "agent/handler/HandlerSettings.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <optional>
#include <string>

namespace NoxHandler {

/// The job files as requests read and change them. At every moment, also after a crash, a task has
/// its old job or its new one as a whole; who was told of a change finds it after a power cut.
///
/// All operations throw JobError, also for an ID that no file can be named after. [any thread]
class JobStore {
 public:
  /// Removes what a crash has left of jobs that were being written.
  explicit JobStore(const HandlerSettings& settings);
  JobStore(const JobStore&) = delete;
  JobStore& operator=(const JobStore&) = delete;

  /// Makes the text the task's job. The text is checked as if it were read from the file; the error
  /// tells all that is wrong with it.
  void Put(const BaseSDK::AString& taskId, const BaseSDK::AString& text) NOX_EXCLUDES(m_Lock);
  /// The text as it stands; nothing when the task has no job.
  std::optional<BaseSDK::AString> Get(const BaseSDK::AString& taskId) const;
  /// False when the task has no job.
  bool Delete(const BaseSDK::AString& taskId) const;

 private:
  void RemoveLeftovers() const;
  int Replace(const BaseSDK::AString& taskId, const std::string& bytes) NOX_REQUIRES(m_Lock);
  BaseSDK::AString NewFile(const BaseSDK::AString& taskId) const;

  const HandlerSettings m_Settings;
  BaseSDK::AMutex m_Lock;  ///< one job is written at a time; a leaf
};

}  // namespace NoxHandler
