#include "agent/handler/system/ProcessTable.h"

#include "agent/handler/system/FileDescriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <sstream>

namespace NoxHandler {

namespace {

// Files of /proc have no size to ask for; an empty text stands for a process that is gone.
std::string ReadAll(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string text;
  std::array<char, 4096> buffer;
  while (file) {
    const ssize_t got = read(file.Get(), buffer.data(), buffer.size());
    if (got == 0 || (got < 0 && errno != EINTR)) {
      break;
    }
    text.append(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  return text;
}

std::string ProcPath(pid_t pid, const char* name) {
  return "/proc/" + std::to_string(pid) + "/" + name;
}

constexpr int MostLooks = 1000;  // a millisecond apart

struct CloseDirectory {
  void operator()(DIR* directory) const { (void)closedir(directory); }
};

}  // namespace

std::optional<ProcessTable::Process> ProcessTable::Find(pid_t pid) {
  const std::string stat = ReadAll(ProcPath(pid, "stat"));
  // The name in parentheses may hold anything, so the fields are those after the last one.
  const std::size_t nameEnd = stat.rfind(')');
  if (nameEnd == std::string::npos) {
    return std::nullopt;
  }
  std::istringstream fields(stat.substr(nameEnd + 1));
  Process process;
  process.m_Pid = pid;
  pid_t parent = 0;
  fields >> process.m_State >> parent >> process.m_Group >> process.m_Session;
  std::string ignored;
  constexpr int FieldsBeforeStart = 15;
  for (int i = 0; i < FieldsBeforeStart; ++i) {
    fields >> ignored;
  }
  fields >> process.m_StartTicks;
  return fields ? std::optional(process) : std::nullopt;
}

std::vector<ProcessTable::Process> ProcessTable::OfSession(pid_t session) {
  std::vector<Process> processes;
  const std::unique_ptr<DIR, CloseDirectory> proc(opendir("/proc"));
  while (const dirent* entry = proc ? readdir(proc.get()) : nullptr) {
    const char* const end = entry->d_name + strlen(entry->d_name);
    pid_t pid = 0;
    if (std::from_chars(entry->d_name, end, pid).ptr != end) {
      continue;
    }
    const auto process = Find(pid);
    const bool belongs = process && (process->m_Session == session || pid == session);
    if (belongs && process->m_State != 'Z' && process->m_State != 'X') {
      processes.push_back(*process);
    }
  }
  return processes;
}

bool ProcessTable::HasVariable(pid_t pid, const std::string& variable) {
  std::string environment = ReadAll(ProcPath(pid, "environ"));
  // While a process becomes another program it shows no variables. That is over at once. A process
  // that never shows any, or may not be asked, must not hold the agent up for long.
  for (int looks = 0; environment.empty() && looks < MostLooks && Find(pid); ++looks) {
    (void)poll(nullptr, 0, 1);
    environment = ReadAll(ProcPath(pid, "environ"));
  }
  environment.insert(0, 1, '\0');
  return environment.find('\0' + variable + '\0') != std::string::npos;
}

std::string ProcessTable::BootId() {
  std::string id = ReadAll("/proc/sys/kernel/random/boot_id");
  while (!id.empty() && id.back() == '\n') {
    id.pop_back();
  }
  return id;
}

}  // namespace NoxHandler
