#include "agent/client/Simulator.h"

#include "agent/client/ExitCode.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <sstream>
#include <string>

namespace NoxAgent {

namespace {

constexpr const char* Program = "nox-simulate";

[[noreturn]] void FailToRun(const std::string& program, int error) {
  throw CommandError(ExitCode::Failed, "cannot run " + program + ": " + std::strerror(error) +
                                           "; see that it is installed with noxctl");
}

// A file without a name: what goes into the program and what comes out of it, of any size, without
// the two processes having to take turns.
class NamelessFile {
 public:
  NamelessFile() : m_Descriptor(::memfd_create(Program, MFD_CLOEXEC)) {
    if (m_Descriptor < 0) {
      FailToRun(Program, errno);
    }
  }
  ~NamelessFile() { (void)::close(m_Descriptor); }
  NamelessFile(const NamelessFile&) = delete;
  NamelessFile& operator=(const NamelessFile&) = delete;

  int Descriptor() const { return m_Descriptor; }

  void Fill(const std::string& text) const {
    for (std::size_t done = 0; done < text.size();) {
      const ssize_t written = ::write(m_Descriptor, text.data() + done, text.size() - done);
      if (written < 0 && errno != EINTR) {
        FailToRun(Program, errno);
      }
      if (written > 0) {
        done += static_cast<std::size_t>(written);
      }
    }
    (void)::lseek(m_Descriptor, 0, SEEK_SET);
  }

  std::string Content() const {
    std::string text;
    std::array<char, 65536> piece;
    (void)::lseek(m_Descriptor, 0, SEEK_SET);
    for (;;) {
      const ssize_t got = ::read(m_Descriptor, piece.data(), piece.size());
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got < 0) {
        FailToRun(Program, errno);
      }
      if (got == 0) {
        return text;
      }
      text.append(piece.data(), static_cast<std::size_t>(got));
    }
  }

 private:
  const int m_Descriptor;
};

std::string FindProgram() {
  std::array<char, PATH_MAX> path;
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  const std::string self(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  const std::string directory = self.substr(0, self.rfind('/') + 1);
  const std::string beside = directory + Program;
  return ::access(beside.c_str(), X_OK) == 0 ? beside : directory + "../libexec/" + Program;
}

// The status as waitpid tells it.
int Run(const std::string& program, const NamelessFile& in, const NamelessFile& out,
        const NamelessFile& err) {
  posix_spawn_file_actions_t actions;
  (void)::posix_spawn_file_actions_init(&actions);
  (void)::posix_spawn_file_actions_adddup2(&actions, in.Descriptor(), STDIN_FILENO);
  (void)::posix_spawn_file_actions_adddup2(&actions, out.Descriptor(), STDOUT_FILENO);
  (void)::posix_spawn_file_actions_adddup2(&actions, err.Descriptor(), STDERR_FILENO);
  std::string name = Program;
  char* const arguments[] = {name.data(), nullptr};
  pid_t child = 0;
  const int error = ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, ::environ);
  (void)::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    FailToRun(program, error);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      FailToRun(program, errno);
    }
  }
  return status;
}

std::vector<Json> Lines(const std::string& text) {
  std::vector<Json> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(Json::Parse(line));
  }
  return lines;
}

}  // namespace

std::vector<Json> AskSimulator(const SimulationRequest& request) {
  const NamelessFile in, out, err;
  in.Fill(ToJson(request).Dump(0, Json::Charset::Ascii));
  const int status = Run(FindProgram(), in, out, err);
  if (status == 0) {
    return Lines(out.Content());
  }
  const std::string words = err.Content();
  throw CommandError(ExitCode::Failed,
                     std::string(Program) + " failed: " +
                         (words.empty() ? "status " + std::to_string(status) : words));
}

}  // namespace NoxAgent
