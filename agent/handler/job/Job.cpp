#include "agent/handler/job/Job.h"

#include "agent/handler/job/JobReader.h"
#include "agent/handler/job/TrustedFile.h"

#include <BaseSDK/AIniText.h>
#include <BaseSDK/AUtf8Encoding.h>

using BaseSDK::AIniText;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

Job ReadJob(const AIniText& ini, std::vector<AString>& problems) {
  JobReader reader(ini.FileName());
  for (const AIniText::Section& section : ini.Sections()) {
    for (const AIniText::Entry& entry : section.m_Entries) {
      if (const AString reason = reader.Take(section.m_Name, entry); !reason.IsEmpty()) {
        problems.push_back(AString(ini.ErrorAt(entry.m_Line, reason).what()));
      }
    }
  }
  for (const AString& problem : reader.Missing()) {
    problems.push_back(problem);
  }
  return reader.Result();
}

}  // namespace

Job Job::Parse(const AString& fileName, const AString& text) {
  std::vector<AString> problems;
  const Job job = Parse(fileName, text, problems);
  if (!problems.empty()) {
    throw JobError(problems.front());
  }
  return job;
}

Job Job::Parse(const AString& fileName, const AString& text, std::vector<AString>& problems) {
  try {
    return ReadJob(AIniText(fileName, text), problems);
  } catch (const BaseSDK::AIniError& error) {
    problems.emplace_back(error.what());
    return Job();
  }
}

Job Job::Load(const AString& fileName) {
  const std::string bytes = TrustedFile::Read("job file", fileName);
  return Parse(fileName, BaseSDK::AUtf8Encoding().Decode(bytes));
}

Job Job::Beside(const std::vector<std::string>& words) const {
  Job job = *this;
  job.m_Command = words.front();
  job.m_Arguments.assign(words.begin() + 1, words.end());
  job.m_Input.clear();
  job.m_Success = {0};
  job.m_TimeoutSeconds = BesideSeconds;
  job.m_Retry = {false, 0, 0};
  return job;
}

JobError Job::ErrorAt(const char* key, const AString& reason) const {
  const auto line = m_Lines.find(key);
  const AString place = line == m_Lines.end()
                            ? m_FileName
                            : AString("%1:%2").Arg(m_FileName, AString().SetNum(line->second, 'u'));
  return JobError(AString("%1: %2: %3").Arg(place, key, reason));
}

}  // namespace NoxHandler
