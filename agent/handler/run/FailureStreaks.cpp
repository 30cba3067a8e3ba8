#include "agent/handler/run/FailureStreaks.h"

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

// More than as many as are remembered can take, each byte of an ID as "%xx".
constexpr std::size_t MaxStreaksBytes = FailureStreaks::Most * 1024;

}  // namespace

FailureStreaks::FailureStreaks(const AString& directory) : m_FileName(directory + "/streaks") {
  std::string text;
  if (const int error = SafeFile::Read(m_FileName, MaxStreaksBytes, text);
      error != 0 && error != ENOENT) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Cannot read how many runs have failed in a row in %1: %2")
             .Arg(m_FileName, strerror(error)));
  }
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    ReadLine(line);
  }
  m_IsChanged = false;
}

void FailureStreaks::ReadLine(std::string_view line) {
  std::istringstream fields{std::string(line)};
  Streak streak;
  std::string id;
  fields >> streak.m_Failures >> streak.m_IsTold >> streak.m_End >> id;
  const AString taskId = AUrl::Decode(AString::FromUtf8(id));
  if (!fields || streak.m_Failures < 1 || !TaskBatch::IsTaskId(taskId)) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Leaving out an unreadable line of %1").Arg(m_FileName));
    return;
  }
  Note(taskId, streak);
}

FailureStreaks::Streak FailureStreaks::Of(const AString& taskId) const {
  const auto found = m_Streaks.find(taskId);
  return found == m_Streaks.end() ? Streak() : found->second;
}

void FailureStreaks::Note(const AString& taskId, const Streak& streak) {
  m_Streaks[taskId] = streak;
  if (m_Streaks.size() > Most) {
    m_Streaks.erase(std::min_element(m_Streaks.begin(), m_Streaks.end(),
                                     [](const auto& left, const auto& right) {
                                       return left.second.m_End < right.second.m_End;
                                     }));
  }
  m_IsChanged = true;
}

void FailureStreaks::Forget(const AString& taskId) {
  m_IsChanged = m_Streaks.erase(taskId) > 0 || m_IsChanged;
}

void FailureStreaks::Save() {
  if (!m_IsChanged) {
    return;
  }
  const int error = SafeFile::Replace(m_FileName, Encode());
  m_IsChanged = error != 0;
  if (error != 0) {
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Cannot write %1: %2. A restart of the agent forgets how many runs have failed in "
                 "a row.")
             .Arg(m_FileName, strerror(error)));
  }
}

std::string FailureStreaks::Encode() const {
  std::ostringstream text;
  for (const auto& [taskId, streak] : m_Streaks) {
    text << streak.m_Failures << ' ' << streak.m_IsTold << ' ' << streak.m_End << ' '
         << AUrl::Encode(taskId).ToUtf8() << '\n';
  }
  return text.str();
}

}  // namespace NoxHandler
