#include "agent/handler/system/SafeFile.h"

#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/FileWrite.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

using BaseSDK::AString;

namespace NoxHandler {

int SafeFile::Read(const AString& name, std::size_t maxBytes, std::string& text) {
  const FileDescriptor file(
      open(name.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  std::array<char, 16 * 1024> buffer;
  while (file && text.size() < maxBytes) {
    const ssize_t got = read(file.Get(), buffer.data(), buffer.size());
    if (got == 0) {
      return 0;
    }
    if (got < 0 && errno != EINTR) {
      return errno;
    }
    text.append(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  return file ? EFBIG : errno;
}

// On the disk before it has the name: else a power cut could leave the name to an empty file.
int SafeFile::Replace(const AString& name, const std::string& bytes) {
  const std::string wanted = name.ToUtf8();
  const std::string temporary = wanted + ".new";
  const FileDescriptor file(open(
      temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file) {
    return errno;
  }
  std::string_view rest = bytes;
  int error = FileWrite::Next(file.Get(), rest);
  if (error == 0 &&
      (fdatasync(file.Get()) != 0 || rename(temporary.c_str(), wanted.c_str()) != 0)) {
    error = errno;
  }
  if (error != 0) {
    (void)unlink(temporary.c_str());
  }
  return error;
}

}  // namespace NoxHandler
