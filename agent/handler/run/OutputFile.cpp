#include "agent/handler/run/OutputFile.h"

#include "agent/handler/Log.h"

#include <BaseSDK/ADateTime.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

using BaseSDK::ADateTime;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

std::string ReadTail(int fd, std::size_t maxBytes) {
  struct stat info {};
  std::string tail;
  if (fstat(fd, &info) != 0) {
    return tail;
  }
  const auto keep = static_cast<off_t>(maxBytes);
  off_t position = info.st_size > keep ? info.st_size - keep : 0;
  tail.resize(static_cast<std::size_t>(info.st_size - position));
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
  return tail;
}

}  // namespace

OutputFile::OutputFile(const AString& name)
    : m_Name(name),
      m_File(open(name.ToUtf8().c_str(),
                  O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0640)) {
  if (!m_File) {
    GiveUp("open", errno);
    return;
  }
  m_Tail = ReadTail(m_File.Get(), 2 * KeepBytes);
  m_AtLineStart = m_Tail.empty() || m_Tail.back() == '\n';
}

OutputFile::~OutputFile() {
  if (m_File && m_Tail.size() > KeepBytes) {
    CutBack();
  }
}

void OutputFile::Append(std::string_view bytes) {
  if (!m_File || bytes.empty()) {
    return;
  }
  m_AtLineStart = bytes.back() == '\n';
  m_Tail += bytes;
  if (m_Tail.size() > 2 * KeepBytes) {
    CutBack();
  } else {
    Write(bytes);
  }
}

void OutputFile::AppendNote(const AString& text) {
  const AString note = AString(m_AtLineStart ? "-- %1 %2\n" : "\n-- %1 %2\n")
                           .Arg(ADateTime::Now().ToString("%Y-%m-%d %H:%M:%S"), text);
  Append(note.ToUtf8());
}

void OutputFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(m_File.Get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      GiveUp("write", errno);
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void OutputFile::CutBack() {
  std::size_t begin = m_Tail.size() - KeepBytes;
  if (const std::size_t lineEnd = m_Tail.find('\n', begin - 1);
      lineEnd != std::string::npos && lineEnd + 1 < m_Tail.size()) {
    begin = lineEnd + 1;
  }
  m_Tail.erase(0, begin);
  if (ftruncate(m_File.Get(), 0) != 0) {
    GiveUp("shorten", errno);
    return;
  }
  Write(m_Tail);
}

void OutputFile::GiveUp(const char* action, int error) {
  ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
       AString("Cannot %1 the output file %2: %3. This run's output is in the log alone.")
           .Arg(action, m_Name, strerror(error)));
  m_File.Close();
}

}  // namespace NoxHandler
