#include "agent/handler/run/FinalFailures.h"

#include "agent/handler/Log.h"
#include "agent/handler/system/SafeFile.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AUrl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

using BaseSDK::ALogger;
using BaseSDK::AString;
using BaseSDK::AUrl;

namespace NoxHandler {

namespace {

// More than as many as are remembered can take, each character of ID and reason as "%xx" of four
// bytes.
constexpr std::size_t MaxFileBytes = FinalFailures::Most * 8 * 1024;

}  // namespace

FinalFailures::FinalFailures(const AString& directory) : m_FileName(directory + "/failures") {
  std::string text;
  if (const int error = SafeFile::Read(m_FileName, MaxFileBytes, text);
      error != 0 && error != ENOENT) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Cannot read the failures of earlier runs in %1: %2")
             .Arg(m_FileName, strerror(error)));
  }
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    ReadLine(line);
  }
  m_IsChanged = false;
}

void FinalFailures::ReadLine(std::string_view line) {
  std::istringstream fields{std::string(line)};
  Failure failure;
  std::string id;
  std::string reason;
  fields >> failure.m_Start >> failure.m_End >> id >> reason;
  const AString taskId = AUrl::Decode(AString::FromUtf8(id));
  if (!fields || !TaskBatch::IsTaskId(taskId)) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Leaving out an unreadable line of %1").Arg(m_FileName));
    return;
  }
  failure.m_Reason = AUrl::Decode(AString::FromUtf8(reason));
  Note(taskId, failure);
}

void FinalFailures::Note(const AString& taskId, Failure failure) {
  failure.m_Reason = failure.m_Reason.Left(MaxReason);
  m_Failures[taskId] = std::move(failure);
  if (m_Failures.size() > Most) {
    m_Failures.erase(std::min_element(m_Failures.begin(), m_Failures.end(),
                                      [](const auto& left, const auto& right) {
                                        return left.second.m_End < right.second.m_End;
                                      }));
  }
  m_IsChanged = true;
}

void FinalFailures::Forget(const AString& taskId) {
  m_IsChanged = m_Failures.erase(taskId) > 0 || m_IsChanged;
}

void FinalFailures::Save() {
  if (!m_IsChanged) {
    return;
  }
  const int error = SafeFile::Replace(m_FileName, Encode());
  m_IsChanged = error != 0;
  if (error != 0) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Cannot write %1: %2. A restart of the agent forgets the failures of runs that "
                 "are not tried again.")
             .Arg(m_FileName, strerror(error)));
  }
}

std::string FinalFailures::Encode() const {
  std::ostringstream text;
  for (const auto& [taskId, failure] : m_Failures) {
    text << failure.m_Start << ' ' << failure.m_End << ' ' << AUrl::Encode(taskId).ToUtf8() << ' '
         << AUrl::Encode(failure.m_Reason).ToUtf8() << '\n';
  }
  return text.str();
}

}  // namespace NoxHandler
