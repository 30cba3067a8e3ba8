#include "FileBytes.h"
#include "Retry.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AResult.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace BaseSDK {

namespace {

constexpr unsigned NewFileMode = 0644;
constexpr std::size_t TailLength = 6;
constexpr std::string_view TailCharacters =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

std::string RandomTail() {
  std::uint64_t number = AFileSystem::Current().UniqueNumber();
  std::string tail;
  for (std::size_t i = 0; i < TailLength; ++i) {
    tail += TailCharacters[static_cast<std::size_t>(number % TailCharacters.size())];
    number /= TailCharacters.size();
  }
  return tail;
}

/// Bytes for the system. A zero character would cut the name short and mean another file.
bool ToPath(const AString& name, std::string& path) {
  path = name.ToUtf8();
  return path.find('\0') == std::string::npos;
}

/// Creates and opens `prefix` + a random tail that no file has; `path` is its name.
int CreateUnique(const std::string& prefix, std::string& path, int& fd) {
  constexpr int Attempts = 100;  // 62^6 names: only a broken file system is unlucky that often
  int error = EEXIST;
  for (int i = 0; i < Attempts && error == EEXIST; ++i) {
    path = prefix + RandomTail();
    error = OpenFile(path.c_str(), O_RDWR | O_CREAT | O_EXCL, NewFileMode, fd);
  }
  return error;
}

int Unlink(const std::string& path) {
  return Retry([&] { return AFileSystem::Current().Unlink(path.c_str()); });
}

/// The mode to keep: that of the file at `path`; 0 when there is none to keep. Refuses what a
/// rename must not replace.
int ModeToKeep(const std::string& path, unsigned& mode) {
  constexpr unsigned PermissionBits = 07777;
  AFileSystem::Info info;
  mode = 0;
  const int error = Retry([&] { return AFileSystem::Current().GetInfo(path.c_str(), info); });
  if (error == ENOENT) {
    return 0;
  }
  if (error != 0) {
    return error;
  }
  if (S_ISREG(info.m_Mode)) {
    mode = info.m_Mode & PermissionBits;
    return 0;
  }
  return S_ISLNK(info.m_Mode) ? 0 : S_ISDIR(info.m_Mode) ? EISDIR : EINVAL;
}

/// "dir/T1.vsk" gives "dir/.T1."; the tail follows.
std::string TemporaryPrefix(const std::string& path) {
  constexpr std::size_t LongestName = 255;
  constexpr std::size_t LongestStem = LongestName - TailLength - 2;
  const std::string_view directory = DirectoryPart(path);
  std::string_view stem = std::string_view(path).substr(directory.size());
  const std::size_t dot = stem.rfind('.');
  if (dot != std::string_view::npos && dot > 0) {
    stem = stem.substr(0, dot);
  }
  return std::string(directory) + '.' + std::string(stem.substr(0, LongestStem)) + '.';
}

bool IsTemporary(std::string_view name) {
  const std::size_t shortest = TailLength + 3;  // two dots and a stem of one character
  return name.size() >= shortest && name.front() == '.' &&
         name[name.size() - TailLength - 1] == '.' &&
         name.substr(name.size() - TailLength).find_first_not_of(TailCharacters) ==
             std::string_view::npos;
}

int Fill(int fd, const std::string& bytes, unsigned mode) {
  int error = mode == 0 ? 0 : Retry([&] { return AFileSystem::Current().SetMode(fd, mode); });
  std::size_t written = 0;
  error = error != 0 ? error : WriteAll(fd, bytes.data(), bytes.size(), written);
  return error != 0 ? error : FlushFile(fd);
}

int RenameFile(const std::string& from, const std::string& to, bool replace) {
  return Retry([&] { return AFileSystem::Current().Rename(from.c_str(), to.c_str(), replace); });
}

/// Steps in the order that keeps the old file until the new one is whole and on the disk.
int ReplaceFile(const std::string& path, const std::string& bytes) {
  unsigned mode = 0;
  std::string temporary;
  const std::string directory = DirectoryOf(path);
  int fd = -1;
  int error = ModeToKeep(path, mode);
  error = error != 0 ? error : CreateUnique(TemporaryPrefix(path), temporary, fd);
  if (error != 0) {
    return error;
  }
  error = Fill(fd, bytes, mode);
  const int closeError = AFileSystem::Current().Close(fd);
  error = error != 0 ? error : closeError;
  error = error != 0 ? error : RenameFile(temporary, path, true);
  if (error != 0) {
    (void)Unlink(temporary);  // the first error is the one to tell
    return error;
  }
  return FlushDirectory(directory);
}

int ReadBounded(const std::string& path, std::string& bytes) {
  int fd = -1;
  // Not blocking: a pipe put in a file's place must not hold the reader for ever.
  const int error = OpenFile(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, fd);
  if (error != 0) {
    return error;
  }
  struct Closer {
    int m_Fd;
    // Nothing was written that could be lost.
    ~Closer() { (void)AFileSystem::Current().Close(m_Fd); }
  };
  const Closer closer{fd};
  return ReadAll(fd, AFile::MaxReadBytes, bytes);
}

int ListTemporaries(const std::string& directory, std::vector<std::string>& names) {
  unsigned long handle = 0;
  const int error =
      Retry([&] { return AFileSystem::Current().OpenDirectory(directory.c_str(), handle); });
  if (error != 0) {
    return error;
  }
  const char* name = nullptr;
  int readError = 0;
  do {
    readError = Retry([&] { return AFileSystem::Current().ReadDirectory(handle, name); });
    if (readError == 0 && name != nullptr && IsTemporary(name)) {
      names.emplace_back(name);
    }
  } while (readError == 0 && name != nullptr);
  (void)AFileSystem::Current().CloseDirectory(handle);  // it was only read
  return readError;
}

int RemoveTemporary(const std::string& path, unsigned& removed) {
  AFileSystem::Info info;
  int error = Retry([&] { return AFileSystem::Current().GetInfo(path.c_str(), info); });
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
  int error = CreateUnique(prefix, path, fd);
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
  const int error = ReplaceFile(path, encoding.Encode(text));
  AFileSystem::Current().Replaced(path.c_str(), error);
  return ResultFromErrno(error);
}

unsigned long AFile::Remove(const AString& name, unsigned long flags) {
  std::string path;
  int error = ToPath(name, path) && flags == 0 ? 0 : EINVAL;
  const std::string directory = DirectoryOf(path);
  error = error != 0 ? error : Unlink(path);
  return ResultFromErrno(error != 0 ? error : FlushDirectory(directory));
}

unsigned long AFile::Rename(const AString& from, const AString& to, unsigned long flags) {
  std::string source;
  std::string target;
  const bool valid = ToPath(from, source) && ToPath(to, target) && (flags & ~ReplaceExisting) == 0;
  const std::string left = DirectoryOf(source);
  const std::string entered = DirectoryOf(target);
  int error = valid ? RenameFile(source, target, flags == ReplaceExisting) : EINVAL;
  error = error != 0 ? error : FlushDirectory(entered);
  if (error == 0 && left != entered) {
    error = FlushDirectory(left);
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
