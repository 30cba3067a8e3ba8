#include "agent/handler/job/JobStore.h"

#include "agent/handler/Log.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/job/TrustedFile.h"
#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/FileWrite.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AUtf8Encoding.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

// What is written is called so until it is whole. No task's files begin with a dot.
constexpr std::string_view NewFilePrefix = ".";
constexpr std::string_view NewFileSuffix = ".job.new";
constexpr std::size_t MaxToldProblems = 20;

bool IsNewFile(std::string_view name) {
  return name.size() > NewFilePrefix.size() + NewFileSuffix.size() &&
         name.starts_with(NewFilePrefix) && name.ends_with(NewFileSuffix);
}

void CheckTaskId(const AString& taskId) {
  if (!TaskBatch::IsTaskId(taskId)) {
    throw JobError(AString("no job file can bear the ID \"%1\"").Arg(taskId.Left(250)));
  }
}

JobError ChangeError(const char* action, const AString& fileName, int error) {
  return JobError(
      AString("cannot %1 the job file %2: %3").Arg(action, fileName, std::strerror(error)));
}

AString Joined(const std::vector<AString>& problems) {
  AString text;
  for (std::size_t index = 0; index < problems.size() && index < MaxToldProblems; ++index) {
    text += index == 0 ? problems[index] : "; " + problems[index];
  }
  if (problems.size() > MaxToldProblems) {
    text += AString("; and %1 more")
                .Arg(DecimalText(static_cast<long>(problems.size() - MaxToldProblems)));
  }
  return text;
}

void CheckText(const AString& fileName, const std::string& bytes) {
  if (bytes.size() > TrustedFile::MaxBytes) {
    throw JobError(AString("the job file %1 is larger than 64 KiB").Arg(fileName));
  }
  std::vector<AString> problems;
  (void)Job::Parse(fileName, BaseSDK::AUtf8Encoding().Decode(bytes), problems);
  if (!problems.empty()) {
    throw JobError(Joined(problems));
  }
}

// Each gives 0 or the errno of what failed.

int WriteSafely(const std::string& path, std::string_view bytes) {
  const FileDescriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) {
    return errno;
  }
  const int error = FileWrite::Next(file.Get(), bytes);
  return error != 0 || fsync(file.Get()) == 0 ? error : errno;
}

int FlushDirectory(const AString& path) {
  const FileDescriptor directory(open(path.ToUtf8().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return directory && fsync(directory.Get()) == 0 ? 0 : errno;
}

}  // namespace

JobStore::JobStore(const HandlerSettings& settings) : m_Settings(settings) {
  RemoveLeftovers();
}

void JobStore::RemoveLeftovers() const {
  std::error_code error;
  std::vector<std::string> leftovers;
  for (std::filesystem::directory_iterator entry(m_Settings.m_JobPath.ToUtf8(), error), end;
       !error && entry != end; (void)entry.increment(error)) {
    if (IsNewFile(entry->path().filename().native())) {
      leftovers.push_back(entry->path());
    }
  }
  for (const std::string& leftover : leftovers) {
    const bool isGone = unlink(leftover.c_str()) == 0;
    ALOG(HandlerLog(), isGone ? ALogger::Notice : ALogger::Warning, HandlerSource,
         isGone ? AString("Removed %1, a job that was not written to its end")
                      .Arg(AString::FromUtf8(leftover))
                : AString("Cannot remove %1, a job that was not written to its end: %2")
                      .Arg(AString::FromUtf8(leftover), std::strerror(errno)));
  }
}

AString JobStore::NewFile(const AString& taskId) const {
  return m_Settings.m_JobPath + "/" + AString::FromUtf8(std::string(NewFilePrefix)) + taskId +
         AString::FromUtf8(std::string(NewFileSuffix));
}

void JobStore::Put(const AString& taskId, const AString& text) {
  CheckTaskId(taskId);
  const AString fileName = m_Settings.JobFile(taskId);
  const std::string bytes = text.ToUtf8();
  CheckText(fileName, bytes);
  TrustedFile::CheckDirectory("job file", m_Settings.m_JobPath);
  {
    const AMutexGuard guard(m_Lock);
    if (const int error = Replace(taskId, bytes); error != 0) {
      throw ChangeError("write", fileName, error);
    }
  }
  if (const int error = FlushDirectory(m_Settings.m_JobPath); error != 0) {
    throw ChangeError("make safe from a power cut", fileName, error);
  }
  ALOG(HandlerLog(), ALogger::Notice, HandlerSource,
       AString("Wrote the job of the task '%1' as asked").Arg(taskId));
}

int JobStore::Replace(const AString& taskId, const std::string& bytes) {
  const std::string newFile = NewFile(taskId).ToUtf8();
  // Nobody else writes files of this name: what is there could not be removed before.
  (void)unlink(newFile.c_str());
  int error = WriteSafely(newFile, bytes);
  if (error == 0 &&
      std::rename(newFile.c_str(), m_Settings.JobFile(taskId).ToUtf8().c_str()) != 0) {
    error = errno;
  }
  if (error != 0) {
    (void)unlink(newFile.c_str());
  }
  return error;
}

std::optional<AString> JobStore::Get(const AString& taskId) const {
  CheckTaskId(taskId);
  const std::optional<std::string> bytes =
      TrustedFile::Find("job file", m_Settings.JobFile(taskId));
  return bytes.has_value() ? std::optional(BaseSDK::AUtf8Encoding().Decode(*bytes)) : std::nullopt;
}

bool JobStore::Delete(const AString& taskId) const {
  CheckTaskId(taskId);
  const AString fileName = m_Settings.JobFile(taskId);
  if (unlink(fileName.ToUtf8().c_str()) != 0) {
    if (errno == ENOENT) {
      return false;
    }
    throw ChangeError("remove", fileName, errno);
  }
  if (const int error = FlushDirectory(m_Settings.m_JobPath); error != 0) {
    throw ChangeError("make the removal safe from a power cut of", fileName, error);
  }
  ALOG(HandlerLog(), ALogger::Notice, HandlerSource,
       AString("Removed the job of the task '%1' as asked").Arg(taskId));
  return true;
}

}  // namespace NoxHandler
