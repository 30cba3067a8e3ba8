#include "agent/handler/process/LimitSetup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace NoxHandler {

namespace {

constexpr int ThisProcess = 1;  // IOPRIO_WHO_PROCESS, which no header of the C library has
constexpr rlim_t CpuGraceSeconds = 5;

int SetLimit(decltype(RLIMIT_AS) resource, rlim_t soft, rlim_t hard) {
  const rlimit limit{soft, hard};
  return setrlimit(resource, &limit) == 0 ? 0 : errno;
}

}  // namespace

int LimitSetup::SetNice(const ProcessLimits& limits) {
  return !limits.m_Nice || setpriority(PRIO_PROCESS, 0, *limits.m_Nice) == 0 ? 0 : errno;
}

int LimitSetup::SetIoPriority(const ProcessLimits& limits) {
  return !limits.m_IoPriority || syscall(SYS_ioprio_set, ThisProcess, 0, *limits.m_IoPriority) == 0
             ? 0
             : errno;
}

int LimitSetup::SetMemory(const ProcessLimits& limits) {
  return limits.m_MemoryBytes ? SetLimit(RLIMIT_AS, *limits.m_MemoryBytes, *limits.m_MemoryBytes)
                              : 0;
}

int LimitSetup::SetCpuTime(const ProcessLimits& limits) {
  if (!limits.m_CpuSeconds) {
    return 0;
  }
  const auto seconds = static_cast<rlim_t>(*limits.m_CpuSeconds);
  return SetLimit(RLIMIT_CPU, seconds, seconds + CpuGraceSeconds);
}

int LimitSetup::SetFiles(const ProcessLimits& limits) {
  if (!limits.m_Files) {
    return 0;
  }
  const auto files = static_cast<rlim_t>(*limits.m_Files);
  return SetLimit(RLIMIT_NOFILE, files, files);
}

int LimitSetup::SetOomScore(const ProcessLimits& limits) {
  if (limits.m_OomScore.empty()) {
    return 0;
  }
  const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
  if (file < 0) {
    return errno;
  }
  const bool written = write(file, limits.m_OomScore.data(), limits.m_OomScore.size()) >= 0;
  const int error = written ? 0 : errno;
  (void)close(file);
  return error;
}

}  // namespace NoxHandler
