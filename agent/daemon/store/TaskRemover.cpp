#include "agent/daemon/store/TaskRemover.h"

#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/store/TaskEnd.h"
#include "agent/daemon/store/WholeFile.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* TaskRemoverSource = "TaskRemover";

// Of the kind that AFile::RemoveLeftovers takes away, for a crash may leave it.
std::string TemporaryName(std::uint64_t number) {
  constexpr std::size_t TailLength = 6;
  const std::string digits = std::string(TailLength, '0') + std::to_string(number);
  return ".ended." + digits.substr(digits.size() - TailLength);
}

}  // namespace

int TaskRemover::Remove(const std::string& name, const std::string& path) {
  const int error = RemoveCurrent(name, path);
  if (error == ESTALE) {
    ALOG(AgentLog(), ALogger::Warning, TaskRemoverSource,
         AString("The task %1 has ended, but its file was changed meanwhile: it stays, and is read "
                 "again at %2")
             .Arg(TaskOf(name), m_Readings.NextText()));
  } else if (error != 0 && error != ENOENT && error != EINTR) {
    ALOG(AgentLog(), ALogger::Warning, TaskRemoverSource,
         AString("The file of the task %1, which has ended, cannot be deleted: %2. The task comes "
                 "back when the files are read again at %3")
             .Arg(TaskOf(name), std::strerror(error), m_Readings.NextText()));
  }
  return error;
}

int TaskRemover::RemoveCurrent(const std::string& name, const std::string& path) {
  AFileSystem::Info entry;
  if (const int error = m_Files.GetInfo(path.c_str(), entry); error != 0) {
    return error;
  }
  std::string bytes;
  FileIdentity content;  // of the target, where the entry is a symbolic link
  if (const int error = ReadFile(m_Files, path, bytes, content); error != 0) {
    return error;
  }
  if (!m_Known.IsCurrent(name, content)) {
    return ESTALE;
  }
  ALOG(AgentLog(), ALogger::Notice, TaskRemoverSource,
       AString("The task %1 has ended and is deleted: %2").Arg(TaskOf(name), WhyTaskEnds(bytes)));
  return RemoveUnchanged(name, path, FileIdentity(entry));
}

// Renames the file before it deletes it: so a file that takes its place at this very moment is
// seen.
int TaskRemover::RemoveUnchanged(const std::string& name, const std::string& path,
                                 const FileIdentity& identity) {
  const std::string aside = m_Directory.Path() + "/" + TemporaryName(m_Files.UniqueNumber());
  if (const int error = MoveUnchanged(m_Files, path, aside, identity); error != 0) {
    return error;
  }
  const int error = m_Files.Unlink(aside.c_str());
  if (error != 0) {
    (void)m_Files.Rename(aside.c_str(), path.c_str(), false);
    return error;
  }
  m_Known.Forget(name);
  return 0;
}

AString TaskRemover::TaskOf(const std::string& name) const {
  return AString::FromUtf8(m_Directory.TaskIdOf(name));
}

}  // namespace NoxAgent
