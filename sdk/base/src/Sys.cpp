#include <BaseSDK/AFileCalls.h>
#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/Sys.h>

namespace BaseSDK::Wrappers {

unsigned long Sys::Open(const char* name, int flags, int mode, int& fd) {
  return ResultFromErrno(
      AFileCalls::Open(AFileSystem::Current(), name, flags, static_cast<unsigned>(mode), fd));
}

unsigned long Sys::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  AFileSystem& files = AFileSystem::Current();
  const int error = AFileCalls::WriteAll(files, fd, data, size, written);
  return ResultFromErrno(error != 0 ? error : AFileCalls::Flush(files, fd));
}

unsigned long Sys::Close(int fd) {
  return ResultFromErrno(AFileSystem::Current().Close(fd));
}

unsigned long Sys::Opendir(const char* name, unsigned long& handle) {
  handle = 0;
  return ResultFromErrno(
      AFileCalls::Retry([&] { return AFileSystem::Current().OpenDirectory(name, handle); }));
}

unsigned long Sys::Readdir(unsigned long handle, const char*& name) {
  name = nullptr;
  return ResultFromErrno(
      AFileCalls::Retry([&] { return AFileSystem::Current().ReadDirectory(handle, name); }));
}

unsigned long Sys::Closedir(unsigned long handle) {
  return ResultFromErrno(AFileSystem::Current().CloseDirectory(handle));
}

}  // namespace BaseSDK::Wrappers
