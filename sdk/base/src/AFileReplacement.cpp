#include "TemporaryNames.h"

#include <BaseSDK/AFileCalls.h>
#include <BaseSDK/AFileReplacement.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace BaseSDK {

namespace {

/// Why a rename must not replace this file; 0 when it may.
int RefusalOf(const AFileSystem::Info& info) {
  return S_ISREG(info.m_Mode) || S_ISLNK(info.m_Mode) ? 0 : S_ISDIR(info.m_Mode) ? EISDIR : EINVAL;
}

}  // namespace

AFileReplacement::AFileReplacement(AFileSystem& files, std::string path)
    : m_Files(files), m_Path(std::move(path)), m_Directory(AFileCalls::DirectoryOf(m_Path)) {}

AFileReplacement::~AFileReplacement() {
  if (!m_Temporary.empty()) {
    (void)AFileCalls::Retry([&] { return m_Files.Unlink(m_Temporary.c_str()); });
  }
}

int AFileReplacement::Prepare(const std::string& bytes, Flushed flushed) {
  std::string temporary;
  int fd = -1;
  int error = Look();
  error = error != 0 ? error : CreateUnique(m_Files, TemporaryPrefix(m_Path), temporary, fd);
  if (error != 0) {
    return error;
  }
  m_Temporary = std::move(temporary);
  error = Fill(fd, bytes, flushed);
  const int closeError = m_Files.Close(fd);
  return error != 0 ? error : closeError;
}

int AFileReplacement::Look() {
  const int error = AFileCalls::Retry([&] { return m_Files.GetInfo(m_Path.c_str(), m_Previous); });
  m_Replaces = error == 0;
  return error == 0 ? RefusalOf(m_Previous) : error == ENOENT ? 0 : error;
}

int AFileReplacement::Fill(int fd, const std::string& bytes, Flushed flushed) {
  constexpr unsigned PermissionBits = 07777;
  int error = 0;
  if (m_Replaces && S_ISREG(m_Previous.m_Mode)) {
    error =
        AFileCalls::Retry([&] { return m_Files.SetMode(fd, m_Previous.m_Mode & PermissionBits); });
  }
  std::size_t written = 0;
  error =
      error != 0 ? error : AFileCalls::WriteAll(m_Files, fd, bytes.data(), bytes.size(), written);
  return error != 0 || flushed == Flushed::No ? error : AFileCalls::Flush(m_Files, fd);
}

int AFileReplacement::Flush() {
  return AFileCalls::FlushFile(m_Files, m_Temporary);
}

int AFileReplacement::Rename() {
  const int error =
      AFileCalls::Retry([&] { return m_Files.Rename(m_Temporary.c_str(), m_Path.c_str(), true); });
  if (error == 0) {
    m_Temporary.clear();
  }
  return error;
}

int AFileReplacement::FlushDirectory() {
  return AFileCalls::FlushDirectory(m_Files, m_Directory);
}

}  // namespace BaseSDK
