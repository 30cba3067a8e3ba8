#include "agent/handler/process/InputFile.h"

#include "agent/handler/system/FileWrite.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cerrno>
#include <string>

namespace NoxHandler {

FileDescriptor InputFile::Make(std::string_view bytes) {
  if (bytes.empty()) {
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
  }
  const FileDescriptor file(memfd_create("input", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file) {
    return {};
  }
  constexpr int Seals = F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL;
  const int error = FileWrite::At(file.Get(), bytes, 0);
  if (error != 0 || fcntl(file.Get(), F_ADD_SEALS, Seals) != 0) {
    errno = error != 0 ? error : errno;
    return {};
  }
  // Opened anew, it cannot be written to and stands at its beginning.
  const std::string name = "/proc/self/fd/" + std::to_string(file.Get());
  return FileDescriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC));
}

}  // namespace NoxHandler
