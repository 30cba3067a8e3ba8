#include "agent/handler/process/ChildProcess.h"

#include "agent/handler/process/ChildStart.h"
#include "agent/handler/process/InputFile.h"
#include "agent/handler/system/ProcessHandle.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

JobError SystemError(const char* action) {
  return JobError(AString("cannot %1: %2").Arg(action, strerror(errno)));
}

FileDescriptor OutOfTheWay(FileDescriptor fd) {
  if (!fd || fd.Get() >= ChildStart::FirstFree) {
    return fd;
  }
  return FileDescriptor(fcntl(fd.Get(), F_DUPFD_CLOEXEC, ChildStart::FirstFree));
}

struct Pipe {
  FileDescriptor m_Read;
  FileDescriptor m_Write;
};

Pipe MakePipe() {
  int fds[2] = {-1, -1};
  if (pipe2(fds, O_CLOEXEC) != 0) {
    throw SystemError("make a pipe");
  }
  Pipe pipe{OutOfTheWay(FileDescriptor(fds[0])), OutOfTheWay(FileDescriptor(fds[1]))};
  if (!pipe.m_Read || !pipe.m_Write) {
    throw SystemError("make a pipe");
  }
  return pipe;
}

void SetNonBlocking(const FileDescriptor& fd) {
  if (fcntl(fd.Get(), F_SETFL, O_NONBLOCK) != 0) {
    throw SystemError("set up a pipe");
  }
}

// No signal handler of the agent may run in the new process, so signals stay blocked there until
// they are reset.
pid_t ForkWithSignalsBlocked(const ChildStart& start) {
  sigset_t all;
  sigset_t before;
  (void)sigfillset(&all);
  (void)pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t pid = fork();
  if (pid == 0) {
    start.Run();
  }
  const int error = errno;
  (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  return pid;
}

// The key of the job that such a stage is about; null for one that has words of its own.
const char* LimitOf(ChildStart::Stage stage) {
  switch (stage) {
    case ChildStart::Nice:
      return "nice";
    case ChildStart::IoPriority:
      return "ionice";
    case ChildStart::Memory:
      return "memory";
    case ChildStart::CpuTime:
      return "cpu_time";
    case ChildStart::Files:
      return "files";
    case ChildStart::OomScore:
      return "oom_score";
    default:
      return nullptr;
  }
}

AString DescribeFailure(const ChildProcess::Names& names, const ChildStart::Failure& failure) {
  const AString reason = strerror(failure.m_Errno);
  if (const char* const limit = LimitOf(failure.m_Stage)) {
    return AString("cannot set the job's %1: %2").Arg(limit, reason);
  }
  switch (failure.m_Stage) {
    case ChildStart::User:
      return AString("cannot become the job's user %1: %2").Arg(names.m_User, reason);
    case ChildStart::Directory:
      return AString("cannot enter the job's directory %1: %2").Arg(names.m_Directory, reason);
    case ChildStart::Program:
      return AString("cannot run the job's command %1: %2").Arg(names.m_Command, reason);
    default:
      break;
  }
  return AString("cannot set up the command's input and output: %1").Arg(reason);
}

}  // namespace

ChildProcess::ChildProcess(const Launch& launch)
    : m_Names{launch.m_Account.m_Name.c_str(), launch.m_Directory.c_str(),
              launch.m_Arguments.front().c_str()} {
  Pipe go = MakePipe();
  Pipe output = MakePipe();
  Pipe failure = MakePipe();
  const FileDescriptor input = OutOfTheWay(InputFile::Make(launch.m_Input));
  if (!input) {
    throw SystemError("make the command's input");
  }
  SetNonBlocking(output.m_Read);
  SetNonBlocking(failure.m_Read);
  const ChildStart start(
      launch, {go.m_Read.Get(), input.Get(), output.m_Write.Get(), failure.m_Write.Get()});
  m_Pid = ForkWithSignalsBlocked(start);
  if (m_Pid < 0) {
    throw SystemError("make a process");
  }
  m_Output = std::move(output.m_Read);
  m_Failure = std::move(failure.m_Read);
  m_PidFd = ProcessHandle::Open(m_Pid);
  if (!m_PidFd) {
    const JobError error = SystemError("watch the new process");
    go.m_Write.Close();
    (void)waitpid(m_Pid, nullptr, 0);  // it ends at once, because Go() was not called
    throw error;
  }
  m_Go = std::move(go.m_Write);
}

ChildProcess::~ChildProcess() {
  const bool mayRun = !m_Go;  // else it ends at once, because Go() was not called
  m_Go.Close();
  if (m_Pid > 0) {
    (void)waitpid(m_Pid, nullptr, mayRun ? WNOHANG : 0);
  }
}

void ChildProcess::Go() {
  (void)!write(m_Go.Get(), "g", 1);  // it can only fail when the process was killed meanwhile
  m_Go.Close();
}

std::optional<ChildProcess::Outcome> ChildProcess::End() const {
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(m_Pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
      info.si_pid == 0) {
    return std::nullopt;
  }
  return Outcome{info.si_code == CLD_EXITED, info.si_status};
}

AString ChildProcess::StartFailure() const {
  ChildStart::Failure failure{};
  if (read(m_Failure.Get(), &failure, sizeof failure) != sizeof failure) {
    return AString();
  }
  return DescribeFailure(m_Names, failure);
}

void ChildProcess::Reap() {
  (void)waitpid(m_Pid, nullptr, 0);
  m_Pid = -1;
}

}  // namespace NoxHandler
