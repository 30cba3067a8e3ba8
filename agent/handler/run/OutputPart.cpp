#include "agent/handler/run/OutputPart.h"

#include "agent/handler/run/OutputFile.h"
#include "agent/handler/run/OutputHeader.h"
#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AUtf8Encoding.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr wchar_t ReplacementCharacter = 0xFFFD;

[[noreturn]] void ThrowUnreadable(const AString& fileName, const char* reason) {
  throw std::runtime_error(
      AString("cannot read the output file %1: %2").Arg(fileName, reason).ToUtf8());
}

std::uint64_t SizeOfOutput(const FileDescriptor& file, const AString& fileName) {
  struct stat info {};
  if (fstat(file.Get(), &info) != 0) {
    ThrowUnreadable(fileName, std::strerror(errno));
  }
  if (!S_ISREG(info.st_mode)) {
    ThrowUnreadable(fileName, "it is not a regular file");
  }
  return static_cast<std::uint64_t>(info.st_size);
}

std::string PartAt(const FileDescriptor& file, std::uint64_t offset, const AString& fileName) {
  std::string bytes(OutputPart::MaxBytes, '\0');
  const ssize_t got = pread(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
  if (got < 0) {
    ThrowUnreadable(fileName, std::strerror(errno));
  }
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

// In bytes; 1 for what is not the first byte of several.
std::size_t CharacterLength(unsigned char first) {
  if (first < 0xC0) {
    return 1;
  }
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// Without a character at the end of which bytes are still to come.
std::string_view WholeCharacters(std::string_view bytes) {
  constexpr std::size_t LongestPart = 3;
  for (std::size_t length = 1; length <= std::min(LongestPart, bytes.size()); ++length) {
    const auto byte = static_cast<unsigned char>(bytes[bytes.size() - length]);
    if (CharacterLength(byte) > length) {
      return bytes.substr(0, bytes.size() - length);
    }
    if (const bool continues = (byte & 0xC0) == 0x80; !continues) {
      break;
    }
  }
  return bytes;
}

AString ShownText(std::string_view bytes) {
  std::wstring text = BaseSDK::AUtf8Encoding().Decode(bytes).Str();
  std::replace_if(
      text.begin(), text.end(),
      [](wchar_t character) { return character >= 0xD800 && character <= 0xDFFF; },
      ReplacementCharacter);
  return AString(text);
}

}  // namespace

std::optional<OutputPart> OutputPart::Read(const AString& fileName, std::uint64_t position) {
  const FileDescriptor file(
      open(fileName.ToUtf8().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (!file && errno == ENOENT) {
    return std::nullopt;
  }
  if (!file) {
    ThrowUnreadable(fileName, std::strerror(errno));
  }
  const BaseSDK::AMutexGuard guard(OutputFile::s_CutLock);
  const OutputHeader header = OutputHeader::Of(file.Get());
  const std::uint64_t end = header.m_Dropped + SizeOfOutput(file, fileName) - header.m_Size;
  const bool isThere = position >= header.m_Dropped && position <= end;
  const std::uint64_t skipped = isThere ? position - header.m_Dropped + header.m_Size : 0;
  const std::string bytes = PartAt(file, skipped, fileName);
  const std::string_view whole = WholeCharacters(bytes);
  return OutputPart{ShownText(whole), header.m_Dropped + skipped + whole.size() - header.m_Size};
}

}  // namespace NoxHandler
