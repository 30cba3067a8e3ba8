#include "agent/client/SocketDenial.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace NoxAgent {

namespace {

// 0, the group of root, when nothing can be seen.
gid_t GroupOf(const std::string& socketPath) {
  const std::string directory = std::filesystem::path(socketPath).parent_path().string();
  struct stat info {};
  if (::stat(socketPath.c_str(), &info) == 0 || ::stat(directory.c_str(), &info) == 0) {
    return info.st_gid;
  }
  return 0;
}

std::string NameOf(gid_t group) {
  const struct group* const entry = ::getgrgid(group);
  return entry == nullptr ? std::to_string(group) : entry->gr_name;
}

std::string UserName() {
  const struct passwd* const entry = ::getpwuid(::geteuid());
  return entry == nullptr ? "USER" : entry->pw_name;
}

}  // namespace

std::string SocketDenialHint(const std::string& socketPath) {
  const gid_t group = GroupOf(socketPath);
  if (group == 0) {
    return "the socket is for root; use sudo, or name a group with socket_group in the agent's "
           "configuration";
  }
  const std::string name = NameOf(group);
  return "the socket is for the group " + name + "; join it with \"sudo usermod -aG " + name + " " +
         UserName() + "\" and log in again";
}

}  // namespace NoxAgent
