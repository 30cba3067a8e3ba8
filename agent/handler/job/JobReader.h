#pragma once

#include "agent/handler/job/Job.h"

#include <BaseSDK/AIniText.h>
#include <BaseSDK/AString.h>

#include <vector>

namespace NoxHandler {

/// Reads the lines of a job file into a job, one at a time. To add a key, add it to the table in
/// the source.
class JobReader {
 public:
  explicit JobReader(const BaseSDK::AString& fileName) { m_Job.m_FileName = fileName; }

  /// Takes the line into the job. The reason when it will not do, else empty; what the job has for
  /// its key is of no meaning then.
  BaseSDK::AString Take(const BaseSDK::AString& section, const BaseSDK::AIniText::Entry& entry);
  /// What is still missing when all lines have been taken, each with its place.
  std::vector<BaseSDK::AString> Missing() const;

  const Job& Result() const { return m_Job; }

 private:
  BaseSDK::AString TakeVariable(const BaseSDK::AIniText::Entry& entry);

  Job m_Job;
};

}  // namespace NoxHandler
