#include "TemporaryNames.h"

#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace BaseSDK {

namespace {

constexpr unsigned NewFileMode = 0644;
constexpr std::size_t TailLength = 6;
constexpr std::string_view TailCharacters =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

std::string RandomTail(AFileSystem& files) {
  std::uint64_t number = files.UniqueNumber();
  std::string tail;
  for (std::size_t i = 0; i < TailLength; ++i) {
    tail += TailCharacters[static_cast<std::size_t>(number % TailCharacters.size())];
    number /= TailCharacters.size();
  }
  return tail;
}

}  // namespace

int CreateUnique(AFileSystem& files, const std::string& prefix, std::string& path, int& fd) {
  constexpr int Attempts = 100;  // 62^6 names: only a broken file system is unlucky that often
  int error = EEXIST;
  for (int i = 0; i < Attempts && error == EEXIST; ++i) {
    path = prefix + RandomTail(files);
    error = AFileCalls::Open(files, path.c_str(), O_RDWR | O_CREAT | O_EXCL, NewFileMode, fd);
  }
  return error;
}

std::string TemporaryPrefix(std::string_view path) {
  constexpr std::size_t LongestName = 255;
  constexpr std::size_t LongestStem = LongestName - TailLength - 2;
  const std::string_view directory = path.substr(0, path.rfind('/') + 1);  // npos + 1 is 0
  std::string_view stem = path.substr(directory.size());
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

}  // namespace BaseSDK
