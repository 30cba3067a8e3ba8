#include "agent/handler/process/ChildStart.h"

#include "agent/handler/process/Launch.h"
#include "agent/handler/process/LimitSetup.h"

#include <BaseSDK/ADescriptorLimit.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <string>
#include <vector>

namespace NoxHandler {

namespace {

// Where the new process has its own descriptors: right after the streams.
constexpr int FailureFd = 3;
constexpr int GoFd = 4;
static_assert(ChildStart::FirstFree == GoFd + 1);
constexpr int CannotStart = 127;  // the shell's exit status for the same case

// What the kernel takes for a signal's action, at both word sizes; all zero is the default.
struct KernelSigaction {
  unsigned long m_Handler = 0;
  unsigned long m_Flags = 0;
  unsigned long m_Restorer = 0;
  std::uint64_t m_Mask = 0;
};
constexpr unsigned long KernelSignalSetBytes = 8;

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));  // exec does not write there
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ChildStart::ChildStart(const Launch& launch, const Descriptors& descriptors)
    : m_Launch(launch),
      m_Descriptors(descriptors),
      m_Arguments(Pointers(launch.m_Arguments)),
      m_Environment(Pointers(launch.m_Environment)) {}

void ChildStart::Run() const {
  (void)setsid();  // cannot fail: a new process leads no group
  // The session comes first. This closes the copies of the agent's locks, which the next agent
  // waits for; that agent then ends the processes that it finds in the session.
  ConnectStreams();
  ResetSignals();
  BaseSDK::ADescriptorLimit::Restore();
  AwaitGo();
  SetLimits();
  BecomeUser();
  EnterDirectory();
  Execute();
  _exit(CannotStart);
}

// Uses the system call itself, because the C library does not let go of the two signals that it
// keeps for itself. They may be ignored here, if a program with the same library has spawned the
// agent.
void ChildStart::ResetSignals() const {
  const KernelSigaction defaultAction{};
  for (int number = 1; number < NSIG; ++number) {
    // Fails for signals whose action cannot be changed; that action is the default.
    (void)syscall(SYS_rt_sigaction, number, &defaultAction, nullptr, KernelSignalSetBytes);
  }
  sigset_t none;
  (void)sigemptyset(&none);
  (void)sigprocmask(SIG_SETMASK, &none, nullptr);
}

void ChildStart::AwaitGo() const {
  char go = 0;
  ssize_t got = 0;
  do {
    got = read(GoFd, &go, 1);
  } while (got < 0 && errno == EINTR);
  if (got != 1) {
    _exit(CannotStart);  // the agent is gone, and nobody would watch the command
  }
}

void ChildStart::ConnectStreams() const {
  const bool connected = dup2(m_Descriptors.m_Input, STDIN_FILENO) >= 0 &&
                         dup2(m_Descriptors.m_Output, STDOUT_FILENO) >= 0 &&
                         dup2(m_Descriptors.m_Output, STDERR_FILENO) >= 0;
  if (!connected) {
    Fail(Streams, errno);
  }
  if (dup3(m_Descriptors.m_Failure, FailureFd, O_CLOEXEC) < 0 ||
      dup3(m_Descriptors.m_Go, GoFd, O_CLOEXEC) < 0 || close_range(FirstFree, ~0U, 0) != 0) {
    Fail(Streams, errno);
  }
}

// While it may still do what only root may.
void ChildStart::SetLimits() const {
  constexpr struct {
    Stage m_Stage;
    int (*m_Set)(const ProcessLimits& limits);
  } Steps[] = {{Nice, LimitSetup::SetNice},         {IoPriority, LimitSetup::SetIoPriority},
               {OomScore, LimitSetup::SetOomScore}, {CpuTime, LimitSetup::SetCpuTime},
               {Files, LimitSetup::SetFiles},       {Memory, LimitSetup::SetMemory}};
  for (const auto& step : Steps) {
    if (const int error = step.m_Set(m_Launch.m_Limits); error != 0) {
      Fail(step.m_Stage, error);
    }
  }
}

void ChildStart::BecomeUser() const {
  (void)umask(m_Launch.m_Umask);
  const Account& account = m_Launch.m_Account;
  if (!account.m_Switch) {
    return;
  }
  if (setgroups(account.m_Groups.size(), account.m_Groups.data()) != 0 ||
      setresgid(account.m_Gid, account.m_Gid, account.m_Gid) != 0 ||
      setresuid(account.m_Uid, account.m_Uid, account.m_Uid) != 0) {
    Fail(User, errno);
  }
}

void ChildStart::EnterDirectory() const {
  if (chdir(m_Launch.m_Directory.c_str()) == 0) {
    return;
  }
  if (m_Launch.m_MustEnterDirectory || chdir("/") != 0) {
    Fail(Directory, errno);
  }
}

void ChildStart::Execute() const {
  int error = ENOENT;
  for (const std::string& candidate : m_Launch.m_Candidates) {
    (void)execve(candidate.c_str(), m_Arguments.data(), m_Environment.data());
    if (errno != ENOENT && errno != ENOTDIR) {
      error = errno;
    }
  }
  Fail(Program, error);
}

void ChildStart::Fail(Stage stage, int error) const {
  const Failure failure{stage, error};
  const int fd = stage == Streams ? m_Descriptors.m_Failure : FailureFd;
  (void)!write(fd, &failure, sizeof failure);  // exit status 127 says it too
  _exit(CannotStart);
}

}  // namespace NoxHandler
