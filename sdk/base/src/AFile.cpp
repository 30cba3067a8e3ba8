#include "TemporaryNames.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileCalls.h>
#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AResult.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <vector>

namespace BaseSDK {

namespace {

/// Bytes for the system. A zero character would cut the name short and mean another file.
bool ToPath(const AString& name, std::string& path) {
  path = name.ToUtf8();
  return path.find('\0') == std::string::npos;
}

int Unlink(const std::string& path) {
  return AFileCalls::Retry([&] { return AFileSystem::Current().Unlink(path.c_str()); });
}

int RenameFile(const std::string& from, const std::string& to, bool replace) {
  return AFileCalls::Retry(
      [&] { return AFileSystem::Current().Rename(from.c_str(), to.c_str(), replace); });
}

int ReadBounded(const std::string& path, std::string& bytes) {
  int fd = -1;
  // Not blocking: a pipe put in a file's place must not hold the reader for ever.
  const int error = AFileCalls::Open(AFileSystem::Current(), path.c_str(),
                                     O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, fd);
  if (error != 0) {
    return error;
  }
  struct Closer {
    int m_Fd;
    // Nothing was written that could be lost.
    ~Closer() { (void)AFileSystem::Current().Close(m_Fd); }
  };
  const Closer closer{fd};
  return AFileCalls::ReadAll(AFileSystem::Current(), fd, AFile::MaxReadBytes, bytes);
}

int ListTemporaries(const std::string& directory, std::vector<std::string>& names) {
  unsigned long handle = 0;
  const int error = AFileCalls::Retry(
      [&] { return AFileSystem::Current().OpenDirectory(directory.c_str(), handle); });
  if (error != 0) {
    return error;
  }
  const char* name = nullptr;
  int readError = 0;
  do {
    readError =
        AFileCalls::Retry([&] { return AFileSystem::Current().ReadDirectory(handle, name); });
    if (readError == 0 && name != nullptr && IsTemporary(name)) {
      names.emplace_back(name);
    }
  } while (readError == 0 && name != nullptr);
  (void)AFileSystem::Current().CloseDirectory(handle);  // it was only read
  return readError;
}

int RemoveTemporary(const std::string& path, unsigned& removed) {
  AFileSystem::Info info;
  int error = AFileCalls::Retry([&] { return AFileSystem::Current().GetInfo(path.c_str(), info); });
  if (error == 0 && S_ISREG(info.m_Mode)) {
    error = Unlink(path);
    removed += error == 0 ? 1 : 0;
  }
  return error == ENOENT ? 0 : error;
}

}  // namespace

unsigned long AFile::MakeTemp(const AString& nameTemplate, AString& name) {
  std::string prefix;
  std::string path;
  int fd = -1;
  if (!ToPath(nameTemplate, prefix)) {
    return ResultFromErrno(EINVAL);
  }
  int error = CreateUnique(AFileSystem::Current(), prefix, path, fd);
  if (error != 0) {
    return ResultFromErrno(error);
  }
  error = AFileSystem::Current().Close(fd);
  if (error != 0) {
    (void)Unlink(path);
    return ResultFromErrno(error);
  }
  try {
    name = AString::FromUtf8(path);
  } catch (...) {
    (void)Unlink(path);  // nobody would learn its name
    throw;
  }
  return 0;
}

unsigned long AFile::Read(const AString& name, AString& text, const AEncoding& encoding) {
  std::string path;
  std::string bytes;
  const int error = ToPath(name, path) ? ReadBounded(path, bytes) : EINVAL;
  if (error == 0) {
    text = encoding.Decode(bytes);
  }
  return ResultFromErrno(error);
}

unsigned long AFile::Write(const AString& name, const AString& text, const AEncoding& encoding) {
  std::string path;
  if (!ToPath(name, path)) {
    return ResultFromErrno(EINVAL);
  }
  const int error = AFileSystem::Current().ReplaceFile(path.c_str(), encoding.Encode(text));
  return ResultFromErrno(error);
}

unsigned long AFile::Remove(const AString& name, unsigned long flags) {
  std::string path;
  int error = ToPath(name, path) && flags == 0 ? 0 : EINVAL;
  const std::string directory = AFileCalls::DirectoryOf(path);
  error = error != 0 ? error : Unlink(path);
  return ResultFromErrno(
      error != 0 ? error : AFileCalls::FlushDirectory(AFileSystem::Current(), directory));
}

unsigned long AFile::Rename(const AString& from, const AString& to, unsigned long flags) {
  std::string source;
  std::string target;
  const bool valid = ToPath(from, source) && ToPath(to, target) && (flags & ~ReplaceExisting) == 0;
  const std::string left = AFileCalls::DirectoryOf(source);
  const std::string entered = AFileCalls::DirectoryOf(target);
  int error = valid ? RenameFile(source, target, flags == ReplaceExisting) : EINVAL;
  error = error != 0 ? error : AFileCalls::FlushDirectory(AFileSystem::Current(), entered);
  if (error == 0 && left != entered) {
    error = AFileCalls::FlushDirectory(AFileSystem::Current(), left);
  }
  return ResultFromErrno(error);
}

unsigned long AFile::RemoveLeftovers(const AString& directory, unsigned& removed) {
  std::string path;
  std::vector<std::string> names;
  removed = 0;
  if (!ToPath(directory, path)) {
    return ResultFromErrno(EINVAL);
  }
  int error = ListTemporaries(path, names);
  for (const std::string& name : names) {
    const int removeError = RemoveTemporary(path + '/' + name, removed);
    error = error != 0 ? error : removeError;
  }
  return ResultFromErrno(error);
}

}  // namespace BaseSDK
