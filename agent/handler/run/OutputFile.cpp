#include "agent/handler/run/OutputFile.h"

#include "agent/handler/Log.h"
#include "agent/handler/run/OutputHeader.h"
#include "agent/handler/system/FileWrite.h"

#include <BaseSDK/ADateTime.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

using BaseSDK::ADateTime;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr int Flags = O_APPEND | O_NONBLOCK;

struct Tail {
  std::string m_Bytes;
  std::uint64_t m_Begin = 0;  // the position of the first one
};

// The last bytes, at most so many, without the header.
Tail ReadTail(int fd, std::size_t maxBytes) {
  struct stat info {};
  if (fstat(fd, &info) != 0) {
    return {};
  }
  const OutputHeader header = OutputHeader::Of(fd);
  const off_t least = static_cast<off_t>(header.m_Size);
  const off_t position = std::max(least, info.st_size - static_cast<off_t>(maxBytes));
  std::string tail(static_cast<std::size_t>(info.st_size - position), '\0');
  std::size_t size = 0;
  while (size < tail.size()) {
    const ssize_t got =
        pread(fd, tail.data() + size, tail.size() - size, position + static_cast<off_t>(size));
    if (got <= 0) {
      break;
    }
    size += static_cast<std::size_t>(got);
  }
  tail.resize(size);
  return {std::move(tail), header.m_Dropped + static_cast<std::uint64_t>(position - least)};
}

// Overwrites the file's own blocks, because a full disk has no others; a kill in the middle loses
// nothing.
int WriteOver(int fd, std::string_view bytes) {
  const BaseSDK::AMutexGuard guard(OutputFile::s_CutLock);
  (void)fcntl(fd, F_SETFL, Flags & ~O_APPEND);
  int error = FileWrite::At(fd, bytes, 0);
  if (error == 0 && ftruncate(fd, static_cast<off_t>(bytes.size())) != 0) {
    error = errno;
  }
  (void)fcntl(fd, F_SETFL, Flags);
  return error;
}

}  // namespace

BaseSDK::AMutex OutputFile::s_CutLock;

OutputFile::OutputFile(const AString& name) : m_Name(name) {
  (void)Open();
}

OutputFile::~OutputFile() {
  if (m_File && m_Tail.size() > KeepBytes) {
    (void)CutBack();
  }
}

bool OutputFile::Open() {
  m_File = FileDescriptor(
      open(m_Name.ToUtf8().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | Flags, 0640));
  if (!m_File) {
    return Fail("open", errno);
  }
  Tail tail = ReadTail(m_File.Get(), 2 * KeepBytes);
  m_Tail = std::move(tail.m_Bytes);
  m_Begin = tail.m_Begin;
  return true;
}

void OutputFile::Append(std::string_view bytes) {
  if (!bytes.empty()) {
    m_HasGap = !IsReady() || !Put(bytes);
  }
}

void OutputFile::AppendNote(const AString& text) {
  m_HasGap = !IsReady() || !Put(Note(text));
}

bool OutputFile::IsReady() {
  return (m_File || Open()) &&
         (!m_HasGap || Put(Note("output is missing here: it could not be written")));
}

bool OutputFile::Put(std::string_view bytes) {
  if (OutputHeader::MaxBytes + m_Tail.size() + bytes.size() > 2 * KeepBytes) {
    m_Tail += bytes;
    return CutBack();
  }
  std::string_view rest = bytes;
  const int error = FileWrite::Next(m_File.Get(), rest);
  m_Tail += bytes.substr(0, bytes.size() - rest.size());
  return error == 0 || Fail("write", error);
}

bool OutputFile::CutBack() {
  // With its header the file is no longer than before: a full disk has no room for more.
  std::size_t begin = m_Tail.size() - KeepBytes + OutputHeader::MaxBytes;
  if (const std::size_t lineEnd = m_Tail.find('\n', begin - 1);
      lineEnd != std::string::npos && lineEnd + 1 < m_Tail.size()) {
    begin = lineEnd + 1;
  }
  m_Tail.erase(0, begin);
  m_Begin += begin;
  const int error = WriteOver(m_File.Get(), OutputHeader::Line(m_Begin) + m_Tail);
  return error == 0 || Fail("shorten", error);
}

std::string OutputFile::Note(const AString& text) const {
  const bool isAtLineStart = m_Tail.empty() || m_Tail.back() == '\n';
  return AString(isAtLineStart ? "-- %1 %2\n" : "\n-- %1 %2\n")
      .Arg(ADateTime::Now().ToString("%Y-%m-%d %H:%M:%S"), text)
      .ToUtf8();
}

bool OutputFile::Fail(const char* action, int error) {
  if (!m_IsTold) {
    m_IsTold = true;
    ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
         AString("Cannot %1 the output file %2: %3. What cannot be written there is left out.")
             .Arg(action, m_Name, strerror(error)));
  }
  return false;
}

}  // namespace NoxHandler
