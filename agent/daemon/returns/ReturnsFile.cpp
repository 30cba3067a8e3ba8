#include "agent/daemon/returns/ReturnsFile.h"

#include "agent/daemon/process/AgentLog.h"
#include "agent/document/TaskId.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>

using BaseSDK::AFile;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* ReturnsFileSource = "ReturnsFile";

// False when the line is none of the file's.
bool TakeReturn(const std::string& line, ReturnsFile::Moments& moments) {
  std::int32_t seconds = 0;
  const char* const end = line.data() + line.size();
  const auto [at, error] = std::from_chars(line.data(), end, seconds);
  if (error != std::errc() || seconds <= 0 || at == end || *at != ' ') {
    return false;
  }
  const std::string id(at + 1, end);
  return FaultOfTaskId(AString::FromUtf8(id), AString()).IsEmpty() &&
         moments.size() < ReturnsFile::MaxEntries && moments.emplace(id, seconds).second;
}

// False when a part of the text is none of the file's. A line without its end was cut.
bool TakeReturns(const std::string& text, ReturnsFile::Moments& moments) {
  bool isWhole = true;
  std::size_t at = 0;
  for (std::size_t end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    isWhole = TakeReturn(text.substr(at, end - at), moments) && isWhole;
  }
  return isWhole && at == text.size();
}

// A crash in the middle of Write leaves a file beside it, which does no harm when it stays.
void RemoveLeftovers(const std::string& path) {
  unsigned removed = 0;
  (void)AFile::RemoveLeftovers(AString::FromUtf8(path.substr(0, path.rfind('/'))), removed);
}

const char* ReasonOf(unsigned long result) {
  return std::strerror(BaseSDK::ErrnoFromResult(result));
}

}  // namespace

ReturnsFile::Moments ReturnsFile::Read() const {
  RemoveLeftovers(m_Path);
  Moments moments;
  AString text;
  const unsigned long result =
      AFile::Read(AString::FromUtf8(m_Path), text, BaseSDK::AUtf8Encoding());
  if (result != 0 && BaseSDK::ErrnoFromResult(result) != ENOENT) {
    ALOG(AgentLog(), ALogger::Error, ReturnsFileSource,
         AString("Cannot read %1: %2. Disabled tasks do not come back")
             .Arg(AString::FromUtf8(m_Path), ReasonOf(result)));
    PutAside();
  } else if (result == 0 && !TakeReturns(text.ToUtf8(), moments)) {
    ALOG(AgentLog(), ALogger::Error, ReturnsFileSource,
         AString("The file %1 is damaged: some disabled tasks may not come back")
             .Arg(AString::FromUtf8(m_Path)));
    PutAside();
    KeepReadable(moments);
  }
  return moments;
}

void ReturnsFile::KeepReadable(const Moments& moments) const {
  if (const int error = Write(moments); error != 0) {
    ALOG(AgentLog(), ALogger::Error, ReturnsFileSource,
         AString("What of it can be read cannot be written to %1: %2")
             .Arg(AString::FromUtf8(m_Path), std::strerror(error)));
  }
}

// The next writing would destroy what somebody may want to look at.
void ReturnsFile::PutAside() const {
  const AString aside = AString::FromUtf8(m_Path + ".damaged");
  const unsigned long result =
      AFile::Rename(AString::FromUtf8(m_Path), aside, AFile::ReplaceExisting);
  ALOG(AgentLog(), ALogger::Error, ReturnsFileSource,
       result == 0 ? AString("It is %1 now").Arg(aside)
                   : AString("It cannot be renamed to %1: %2").Arg(aside, ReasonOf(result)));
}

int ReturnsFile::Write(const Moments& moments) const {
  std::string text;
  for (const auto& [id, moment] : moments) {
    text += std::to_string(moment) + " " + id + "\n";
  }
  return BaseSDK::ErrnoFromResult(
      AFile::Write(AString::FromUtf8(m_Path), AString::FromUtf8(text), BaseSDK::AUtf8Encoding()));
}

}  // namespace NoxAgent
