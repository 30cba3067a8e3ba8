#include "agent/daemon/process/ServiceGroup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* OwnName = "/agent";
constexpr mode_t DirectoryMode = 0755;
constexpr mode_t FileMode = 0644;

// The service manager marks what it hands over.
bool HasMark(const std::string& directory) {
  char value = 0;
  return ::getxattr(directory.c_str(), "user.delegate", &value, 1) == 1 && value == '1';
}

// 0 or an errno.
int Write(const std::string& path, std::string_view text) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, FileMode);
  if (fd < 0) {
    return errno;
  }
  const int error = ::write(fd, text.data(), text.size()) < 0 ? errno : 0;
  (void)::close(fd);
  return error;
}

// The line of version 2 is "0::" and the path; empty when there is none.
std::string OwnDirectory(const ServiceGroup::System& system) {
  constexpr std::string_view Version2 = "0::";
  std::istringstream lines(system.m_OwnGroups);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(Version2)) {
      const std::string path = line.substr(Version2.size());
      return system.m_Mount + (path == "/" ? std::string() : path);
    }
  }
  return {};
}

// The service manager may have put the agent one below the group that it hands over.
std::string DelegatedDirectory(const ServiceGroup::System& system, const std::string& own) {
  if (system.m_IsDelegated(own)) {
    return own;
  }
  const std::string above = own.substr(0, own.rfind('/'));
  return above.size() >= system.m_Mount.size() && system.m_IsDelegated(above) ? above
                                                                              : std::string();
}

// Moves the process, with all its threads.
int MoveTo(const std::string& directory) {
  return Write(directory + "/cgroup.procs", "0");
}

// Empty when all is done, else what could not be, and why.
AString Divide(const std::string& group, const std::string& own) {
  const auto problem = [](const std::string& path, int error) {
    return AString("%1: %2").Arg(AString::FromUtf8(path), std::strerror(error));
  };
  const std::string inner = group == own ? group + OwnName : own;
  if (inner != own) {
    if (::mkdir(inner.c_str(), DirectoryMode) != 0 && errno != EEXIST) {
      return problem(inner, errno);
    }
    if (const int error = MoveTo(inner); error != 0) {
      (void)::rmdir(inner.c_str());
      return problem(inner + "/cgroup.procs", error);
    }
  }
  const std::string control = group + "/cgroup.subtree_control";
  const int error = Write(control, "+memory");
  if (error != 0 && inner != own) {
    (void)MoveTo(own);
    (void)::rmdir(inner.c_str());
  }
  return error == 0 ? AString() : problem(control, error);
}

}  // namespace

ServiceGroup::System ServiceGroup::System::OfProcess() {
  std::ifstream file("/proc/self/cgroup");
  std::ostringstream groups;
  groups << file.rdbuf();
  return {"/sys/fs/cgroup", groups.str(), HasMark};
}

ServiceGroup ServiceGroup::Take(const System& system) {
  ServiceGroup taken;
  const std::string own = OwnDirectory(system);
  const std::string group = own.empty() ? own : DelegatedDirectory(system, own);
  if (group.empty()) {
    return taken;
  }
  taken.m_Problem = Divide(group, own);
  if (taken.m_Problem.IsEmpty()) {
    taken.m_Path = AString::FromUtf8(group);
  }
  return taken;
}

}  // namespace NoxAgent
