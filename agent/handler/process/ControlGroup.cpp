#include "agent/handler/process/ControlGroup.h"

#include "agent/handler/job/JobError.h"
#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/FileWrite.h"
#include "agent/handler/system/SafeFile.h"

#include <BaseSDK/AString.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <utility>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr mode_t DirectoryMode = 0755;
constexpr mode_t FileMode = 0644;
constexpr std::size_t MostBytes = 64 * 1024;  // far more than the files have that are read here

JobError Refused(const std::string& path, int error) {
  return JobError(AString("%1: %2").Arg(path.c_str(), strerror(error)));
}

}  // namespace

ControlGroup::ControlGroup(std::string path, const ProcessLimits& limits)
    : m_Path(std::move(path)) {
  if (mkdir(m_Path.c_str(), DirectoryMode) != 0) {
    throw Refused(m_Path, errno);
  }
  try {
    LimitMemory(limits);
  } catch (...) {
    (void)Remove(m_Path);
    throw;
  }
}

ControlGroup::~ControlGroup() {
  (void)Remove(m_Path);
}

void ControlGroup::LimitMemory(const ProcessLimits& limits) const {
  if (!limits.m_MemoryBytes) {
    return;
  }
  if (const int error = Write("memory.max", std::to_string(*limits.m_MemoryBytes)); error != 0) {
    throw Refused(m_Path + "/memory.max", error);
  }
  // A run that is out of memory would go on for hours with the disk for memory, or without one of
  // its processes. Not every kernel has these two.
  (void)Write("memory.swap.max", "0");
  (void)Write("memory.oom.group", "1");
}

void ControlGroup::Add(pid_t pid) const {
  if (const int error = Write("cgroup.procs", std::to_string(pid)); error != 0) {
    throw Refused(m_Path + "/cgroup.procs", error);
  }
}

std::chrono::microseconds ControlGroup::CpuTime() const {
  return std::chrono::microseconds(Count("cpu.stat", "usage_usec"));
}

// The machine may be out of memory as well; "oom" counts only when the limit is the reason.
bool ControlGroup::RanOutOfMemory() const {
  return Count("memory.events", "oom") > 0 && Count("memory.events", "oom_kill") > 0;
}

bool ControlGroup::Remove(const std::string& path) {
  return rmdir(path.c_str()) == 0 || errno == ENOENT;
}

// As a shell would. The kernel's directories hold the files that the kernel makes there: one that
// it does not have is an error.
int ControlGroup::Write(const char* file, const std::string& text) const {
  const std::string path = m_Path + "/" + file;
  const FileDescriptor target(
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, FileMode));
  if (!target) {
    return errno;
  }
  std::string_view rest = text;
  return FileWrite::Next(target.Get(), rest);
}

// The number behind the key in a file of lines "key number"; 0 when it is not there.
unsigned long long ControlGroup::Count(const char* file, const std::string& key) const {
  std::string text;
  (void)SafeFile::Read(AString::FromUtf8(m_Path + "/" + file), MostBytes, text);
  std::istringstream lines(text);
  std::string name;
  unsigned long long number = 0;
  while (lines >> name >> number) {
    if (name == key) {
      return number;
    }
  }
  return 0;
}

}  // namespace NoxHandler
