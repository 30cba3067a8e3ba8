#include "tests/agent/e2e/Program.h"

#include "tests/support/Patience.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <sstream>
#include <system_error>

namespace {

constexpr uid_t Nobody = 65534;
constexpr int PauseMilliseconds = 10;
constexpr int Signalled = 1000;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const Command& command) {
  std::vector<std::string> environment;
  for (const auto& [name, value] : command.m_Environment) {
    environment.push_back(name + "=" + value);
  }
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!command.m_Environment.contains(text.substr(0, text.find('=')))) {
      environment.push_back(text);
    }
  }
  return environment;
}

bool BecomeNobody() {
  return setgroups(0, nullptr) == 0 && setgid(Nobody) == 0 && setuid(Nobody) == 0;
}

pid_t Start(const Command& command, int input, int output, int error) {
  const auto arguments = Pointers(command.m_Arguments);
  const auto environment = Environment(command);
  const auto variables = Pointers(environment);
  const pid_t pid = fork();
  if (pid == 0) {
    if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
        dup2(error, STDERR_FILENO) >= 0 && (!command.m_AsNobody || BecomeNobody())) {
      (void)execve(arguments[0], arguments.data(), variables.data());
    }
    _exit(127);
  }
  if (pid < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  return pid;
}

int OpenFile(const std::filesystem::path& path, int flags) {
  const int fd = open(path.c_str(), flags | O_CLOEXEC, 0600);
  if (fd < 0) {
    throw std::system_error(errno, std::generic_category(), path.string());
  }
  return fd;
}

int StatusOf(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : Signalled + WTERMSIG(status);
}

pid_t StartWithFiles(const Command& command, const std::filesystem::path& input,
                     const std::filesystem::path& output, const std::filesystem::path& error) {
  const int in = OpenFile(input, O_RDONLY);
  const int out = OpenFile(output, O_WRONLY | O_CREAT | O_APPEND);
  const int err = OpenFile(error, O_WRONLY | O_CREAT | O_APPEND);
  const pid_t pid = Start(command, in, out, err);
  for (const int fd : {in, out, err}) {
    (void)close(fd);
  }
  return pid;
}

}  // namespace

Program::Program(const Command& command, const std::filesystem::path& output)
    : m_OutputFile(output), m_Pid(StartWithFiles(command, "/dev/null", output, output)) {}

Program::~Program() {
  if (!HasEnded()) {
    Signal(SIGKILL);
    (void)WaitForEnd();
  }
}

void Program::Signal(int number) const {
  if (!m_Status) {
    (void)kill(m_Pid, number);
  }
}

bool Program::HasEnded() {
  int status = 0;
  if (!m_Status && waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
    m_Status = StatusOf(status);
  }
  return m_Status.has_value();
}

int Program::WaitForEnd() {
  return WaitUntil([this] { return HasEnded(); }) ? *m_Status : -1;
}

std::string Program::Output() const {
  return ReadFile(m_OutputFile);
}

bool Program::WaitForOutput(const std::string& text) const {
  return WaitUntil([&] { return Output().find(text) != std::string::npos; });
}

Program::Result Program::Run(const Command& command, const std::filesystem::path& scratch,
                             const std::string& input) {
  const auto in = scratch / "run.in";
  const auto out = scratch / "run.out";
  const auto err = scratch / "run.err";
  std::ofstream(in, std::ios::binary) << input;
  std::ofstream(out).close();
  std::ofstream(err).close();
  const pid_t pid = StartWithFiles(command, in, out, err);
  int status = 0;
  if (!WaitUntil([&] { return waitpid(pid, &status, WNOHANG) == pid; })) {
    (void)kill(pid, SIGKILL);
    (void)waitpid(pid, &status, 0);
  }
  return {StatusOf(status), ReadFile(out), ReadFile(err)};
}

void PauseBeforeAskingAgain() {
  (void)poll(nullptr, 0, PauseMilliseconds);
}

bool IsPatienceOver(int asked) {
  return asked > TestSupport::PatienceMilliseconds / PauseMilliseconds;
}
