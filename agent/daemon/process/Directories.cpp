#include "agent/daemon/process/Directories.h"

#include "agent/daemon/AgentError.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

void MakeOne(const std::string& path, unsigned mode) {
  if (::mkdir(path.c_str(), mode) == 0 && ::chmod(path.c_str(), mode) == 0) {
    return;
  }
  const int error = errno;
  struct stat info {};
  const bool there = ::stat(path.c_str(), &info) == 0;
  if (!there || !S_ISDIR(info.st_mode)) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("cannot make the directory %1: %2")
                         .Arg(AString::FromUtf8(path), std::strerror(there ? ENOTDIR : error)));
  }
}

}  // namespace

void Directories::Make(const AString& path, unsigned mode) {
  const std::string whole = path.ToUtf8();
  for (std::size_t slash = whole.find('/', 1); slash != std::string::npos;
       slash = whole.find('/', slash + 1)) {
    MakeOne(whole.substr(0, slash), mode);
  }
  MakeOne(whole, mode);
}

}  // namespace NoxAgent
