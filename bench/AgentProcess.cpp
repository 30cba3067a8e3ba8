#include "bench/AgentProcess.h"

#include "agent/client/ExitCode.h"
#include "agent/client/HttpConnection.h"
#include "agent/library/Json.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <stdexcept>

namespace Workbench {
namespace {

constexpr int CannotStart = 127;

std::string PathOfProgram(const std::string& name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

/// Starts a program of this build; `output` takes what it says on both streams.
pid_t Start(const std::string& name, const std::vector<std::string>& arguments,
            const std::string& output) {
  std::string program = PathOfProgram(name);
  std::vector<std::string> words = arguments;
  std::vector<char*> pointers{program.data()};
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  const pid_t child = vfork();
  if (child != 0) {
    return child;
  }
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  execv(program.c_str(), pointers.data());
  _exit(CannotStart);
}

void PauseBriefly() {
  const timespec hundredth{0, 10'000'000};
  nanosleep(&hundredth, nullptr);
}

}  // namespace

AgentProcess::AgentProcess(const std::filesystem::path& stateDirectory, long tasks)
    : m_RunDirectory(stateDirectory / "run"),
      m_Pid(
          Start("noxagentd",
                {"--state-dir", stateDirectory.string(), "--runtime-dir", m_RunDirectory.string()},
                (stateDirectory / "log").string())) {
  while (!HasLoaded(tasks)) {
    if (waitpid(m_Pid, nullptr, WNOHANG) != 0) {
      throw std::runtime_error("noxagentd has ended");
    }
    PauseBriefly();
  }
}

AgentProcess::~AgentProcess() {
  kill(m_Pid, SIGTERM);
  waitpid(m_Pid, nullptr, 0);
}

bool AgentProcess::HasLoaded(long tasks) const {
  try {
    NoxAgent::HttpConnection connection(Socket());
    const auto status = NoxAgent::Json::Parse(connection.Get("/v1/status").m_Body);
    return status.At("tasks").At("loaded").Long() == tasks;
  } catch (const NoxAgent::CommandError&) {
    return false;  // it does not answer yet
  }
}

void AgentProcess::RunClient(const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{"--socket", Socket()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const pid_t client = Start("noxctl", words, "/dev/null");
  int status = 0;
  if (waitpid(client, &status, 0) != client || status != 0) {
    throw std::runtime_error("noxctl " + arguments.front() + " has failed");
  }
}

double AgentProcess::ResidentBytes() const {
  std::ifstream sizes("/proc/" + std::to_string(m_Pid) + "/statm");
  double total = 0, resident = 0;
  sizes >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace Workbench
