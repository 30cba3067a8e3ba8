#include "agent/client/EditedFiles.h"

#include "agent/client/ExitCode.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

namespace NoxAgent {

namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& why) {
  throw CommandError(ExitCode::Failed, what + ": " + why);
}

std::filesystem::path MakeDirectory() {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  std::string name = (parent / "noxctl-XXXXXX").string();
  if (error || ::mkdtemp(name.data()) == nullptr) {
    Fail("cannot make a directory for the files to be edited", std::strerror(errno));
  }
  return name;
}

std::string Editor() {
  for (const char* const variable : {"VISUAL", "EDITOR"}) {
    const char* const editor = std::getenv(variable);
    if (editor != nullptr && *editor != '\0') {
      return editor;
    }
  }
  return "vi";
}

// The variable may hold arguments as well, so a shell takes it apart.
[[noreturn]] void RunEditor(const std::string& editor, const std::vector<std::string>& files) {
  const std::string script = editor + " \"$@\"";
  std::vector<char*> arguments;
  for (const char* const word : {"sh", "-c", script.c_str(), editor.c_str()}) {
    arguments.push_back(const_cast<char*>(word));
  }
  for (const std::string& file : files) {
    arguments.push_back(const_cast<char*>(file.c_str()));
  }
  arguments.push_back(nullptr);
  (void)::execv("/bin/sh", arguments.data());
  ::_exit(127);
}

}  // namespace

EditedFiles::EditedFiles(const std::vector<File>& files) : m_Directory(MakeDirectory()) {
  for (const File& file : files) {
    m_Names.push_back(file.m_Name);
    std::ofstream out(m_Directory / file.m_Name, std::ios::binary);
    if (!(out << file.m_Text).flush()) {
      Fail("cannot write " + (m_Directory / file.m_Name).string(), std::strerror(errno));
    }
  }
}

EditedFiles::~EditedFiles() {
  std::error_code ignored;
  if (!m_IsKept) {
    (void)std::filesystem::remove_all(m_Directory, ignored);
  }
}

void EditedFiles::Edit() const {
  std::vector<std::string> files;
  for (std::size_t i = 0; i < m_Names.size(); ++i) {
    files.push_back(PathOf(i).string());
  }
  const std::string editor = Editor();
  const pid_t child = ::fork();
  if (child == 0) {
    RunEditor(editor, files);
  }
  // Ctrl-C is for the editor.
  const auto interrupt = std::signal(SIGINT, SIG_IGN);
  const auto quit = std::signal(SIGQUIT, SIG_IGN);
  int status = 0;
  while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  (void)std::signal(SIGINT, interrupt);
  (void)std::signal(SIGQUIT, quit);
  if (child < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    Fail("the editor " + editor + " failed", "nothing was changed; $EDITOR names another one");
  }
}

std::string EditedFiles::Text(std::size_t file) const {
  std::ifstream in(PathOf(file), std::ios::binary);
  if (!in) {
    Fail("cannot read " + PathOf(file).string(), std::strerror(errno));
  }
  return {std::istreambuf_iterator<char>(in), {}};
}

const std::filesystem::path& EditedFiles::Keep() {
  m_IsKept = true;
  return m_Directory;
}

}  // namespace NoxAgent
