#include "agent/handler/run/FinalFailures.h"

#include "agent/handler/Log.h"
#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/FileWrite.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AUrl.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
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

int ReadWhole(const AString& name, std::string& text) {
  const FileDescriptor file(
      open(name.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  std::array<char, 16 * 1024> buffer;
  while (file && text.size() < MaxFileBytes) {
    const ssize_t got = read(file.Get(), buffer.data(), buffer.size());
    if (got == 0) {
      return 0;
    }
    if (got < 0 && errno != EINTR) {
      return errno;
    }
    text.append(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  return file ? EFBIG : errno;
}

}  // namespace

FinalFailures::FinalFailures(const AString& directory) : m_FileName(directory + "/failures") {
  std::string text;
  if (const int error = ReadWhole(m_FileName, text); error != 0 && error != ENOENT) {
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
  const int error = Replace(Encode());
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

// On the disk before it has the name: else a power cut could leave the name to an empty file.
int FinalFailures::Replace(const std::string& bytes) const {
  const std::string name = m_FileName.ToUtf8();
  const std::string temporary = name + ".new";
  const FileDescriptor file(open(
      temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file) {
    return errno;
  }
  std::string_view rest = bytes;
  int error = FileWrite::Next(file.Get(), rest);
  if (error == 0 && (fdatasync(file.Get()) != 0 || rename(temporary.c_str(), name.c_str()) != 0)) {
    error = errno;
  }
  if (error != 0) {
    (void)unlink(temporary.c_str());
  }
  return error;
}

}  // namespace NoxHandler
