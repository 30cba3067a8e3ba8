#include <BaseSDK/AFileReplacement.h>
#include <BaseSDK/AFileSystem.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <random>

namespace BaseSDK {

namespace {

std::atomic<AFileSystem*> installed{nullptr};

/// 0 when the call gave no error, else its errno.
template <class Result>
int ErrorOf(Result result) {
  return result == -1 ? errno : 0;
}

std::int64_t Nanoseconds(const timespec& time) {
  constexpr std::int64_t PerSecond = 1000000000;
  return std::int64_t{time.tv_sec} * PerSecond + time.tv_nsec;
}

AFileSystem::Info InfoFrom(const struct stat& status) {
  AFileSystem::Info info;
  info.m_Mode = status.st_mode;
  info.m_Device = status.st_dev;
  info.m_Number = status.st_ino;
  info.m_Size = static_cast<std::uint64_t>(status.st_size);
  info.m_Modified = Nanoseconds(status.st_mtim);
  info.m_Changed = Nanoseconds(status.st_ctim);
  return info;
}

DIR* DirectoryOf(unsigned long handle) {
  return reinterpret_cast<DIR*>(static_cast<std::uintptr_t>(handle));
}

}  // namespace

AFileSystem& AFileSystem::Current() {
  // Never destroyed: plug-ins and static objects may still close files while the process ends.
  static AFileSystem& theDefault = *new AFileSystem;
  AFileSystem* const replacement = installed;
  return replacement != nullptr ? *replacement : theDefault;
}

AFileSystem* AFileSystem::Replace(AFileSystem* fileSystem) {
  return installed.exchange(fileSystem);
}

int AFileSystem::Open(const char* path, int flags, unsigned mode, int& fd) {
  fd = open(path, flags | O_CLOEXEC, mode);
  return ErrorOf(fd);
}

int AFileSystem::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  const ssize_t count = read(fd, buffer, size);
  got = count > 0 ? static_cast<std::size_t>(count) : 0;
  return ErrorOf(count);
}

int AFileSystem::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  const ssize_t count = write(fd, data, size);
  written = count > 0 ? static_cast<std::size_t>(count) : 0;
  return ErrorOf(count);
}

int AFileSystem::Sync(int fd) {
  return ErrorOf(fsync(fd));
}

int AFileSystem::SyncData(int fd) {
  return ErrorOf(fdatasync(fd));
}

int AFileSystem::SyncAll(int fd) {
  return ErrorOf(syncfs(fd));
}

int AFileSystem::Close(int fd) {
  return ErrorOf(close(fd));
}

int AFileSystem::SetMode(int fd, unsigned mode) {
  return ErrorOf(fchmod(fd, mode));
}

int AFileSystem::GetInfo(const char* path, Info& info) {
  struct stat status {};
  const int error = ErrorOf(lstat(path, &status));
  info = error == 0 ? InfoFrom(status) : Info();
  return error;
}

int AFileSystem::GetOpenInfo(int fd, Info& info) {
  struct stat status {};
  const int error = ErrorOf(fstat(fd, &status));
  info = error == 0 ? InfoFrom(status) : Info();
  return error;
}

int AFileSystem::Rename(const char* from, const char* to, bool replace) {
  return ErrorOf(renameat2(AT_FDCWD, from, AT_FDCWD, to, replace ? 0 : RENAME_NOREPLACE));
}

int AFileSystem::Unlink(const char* path) {
  return ErrorOf(unlink(path));
}

int AFileSystem::OpenDirectory(const char* path, unsigned long& handle) {
  DIR* const directory = opendir(path);
  handle = static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(directory));
  return directory == nullptr ? errno : 0;
}

int AFileSystem::ReadDirectory(unsigned long handle, const char*& name) {
  errno = 0;
  const dirent* const entry = readdir(DirectoryOf(handle));
  name = entry != nullptr ? entry->d_name : nullptr;
  return entry != nullptr ? 0 : errno;
}

int AFileSystem::CloseDirectory(unsigned long handle) {
  return ErrorOf(closedir(DirectoryOf(handle)));
}

int AFileSystem::ReplaceFile(const char* path, const std::string& bytes) {
  AFileReplacement replacement(*this, path);
  int error = replacement.Prepare(bytes, AFileReplacement::Flushed::Yes);
  error = error != 0 ? error : replacement.Rename();
  return error != 0 ? error : replacement.FlushDirectory();
}

void AFileSystem::MakeSafe() {}

std::uint64_t AFileSystem::UniqueNumber() {
  std::random_device source;
  return (std::uint64_t{source()} << 32) | source();
}

}  // namespace BaseSDK
